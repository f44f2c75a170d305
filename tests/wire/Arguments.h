#pragma once

#include "wire/Pattern.h"
#include "wire/Records.h"

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace wire
{

/// One argument as a case writes it.
struct ArgumentForm
{
    enum class Kind
    {
        Null,
        Text,      ///< "text"
        Number,    ///< 17
        Data,      ///< data "bytes"
        OutNumber, ///< out name, or out name=17
        OutWide,   ///< wide name[34], or wide name[34]="text"
        OutBytes,  ///< bytes name[10]
        OutIds,    ///< ids name[10]
        Texts,     ///< texts, or texts{"name", 3*"value"}
        Records    ///< files name, or files name{"key", 3*"key"}; also folders, pcodes ...
    };

    Kind kind = Kind::Null;
    std::string name;
    std::string text;     ///< also what a buffer holds before the call
    long long number = 0; ///< a number's value; a buffer's room
    std::string recordsKind;
    std::vector<std::string> keys; ///< of the records that the vector holds before the call; a vector's texts
};

std::vector<ArgumentForm> parseArguments(std::string_view raw, const Variables& variables);

/// How a number that was written is to be read.
enum class NumberKind
{
    Unsigned,
    Signed,
    Floating
};

/// Memory between two guard zones, filled so that every byte written shows.
class GuardedBuffer
{
public:
    /// @param before a text that it holds at the start
    explicit GuardedBuffer(std::size_t size, const std::wstring& before = {});

    void* data() { return m_bytes.data() + guard; }
    std::string_view content() const { return std::string_view(m_bytes).substr(guard, m_size); }
    bool isUnchanged() const { return content() == m_before; }
    bool isGuardIntact() const;

    static constexpr char fill = '\xA5';

private:
    static constexpr std::size_t guard = 256;

    std::size_t m_size;
    std::string m_bytes;
    std::string m_before; ///< the content at the start
};

/// The arguments of one call: what it is given, and afterwards what it has written.
class Arguments
{
public:
    explicit Arguments(const std::vector<ArgumentForm>& forms);

    std::size_t count() const { return m_arguments.size(); }

    bool isNull(std::size_t index) const;
    const wchar_t* text(std::size_t index) const;
    const char* bytes(std::size_t index) const; ///< of a text, as they are
    const std::vector<std::string>& texts(std::size_t index) const;
    unsigned* ids(std::size_t index);
    wchar_t* wide(std::size_t index);
    void* buffer(std::size_t index);
    std::size_t room(std::size_t index) const; ///< bytes of a buffer

    template <typename Number>
    Number number(std::size_t index) const
    {
        const Argument& argument = at(index, ArgumentForm::Kind::Number);
        return static_cast<Number>(argument.form.number);
    }

    template <typename Number>
    Number& out(std::size_t index)
    {
        Argument& argument = at(index, ArgumentForm::Kind::OutNumber);
        argument.numberKind = std::is_floating_point_v<Number> ? NumberKind::Floating
                              : Number(-1) < Number(0)         ? NumberKind::Signed
                                                               : NumberKind::Unsigned;
        argument.memory.emplace(sizeof(Number));
        auto* const value = static_cast<Number*>(argument.memory->data());
        *value = static_cast<Number>(argument.form.number);
        return *value;
    }

    /// @return whether the argument is a vector of these records
    template <class Record>
    bool holds(std::size_t index) const
    {
        return index < count() &&
               dynamic_cast<const RecordVector<Record>*>(m_arguments[index].records.get()) != nullptr;
    }

    template <class Record>
    std::vector<Record>& records(std::size_t index)
    {
        Argument& argument = at(index, ArgumentForm::Kind::Records);
        auto* const vector = dynamic_cast<RecordVector<Record>*>(argument.records.get());
        if (vector == nullptr)
            throw CaseError("argument " + std::to_string(index + 1) + " is a vector of other records");
        return vector->records();
    }

    /// Holds the written values against the expected ones (raw, by name); what is not expected must be unchanged.
    std::vector<std::string> differences(const std::map<std::string, std::string>& expected,
                                         const Variables& variables) const;

private:
    struct Argument
    {
        ArgumentForm form;
        std::wstring wideText;
        std::optional<GuardedBuffer> memory;
        std::unique_ptr<Records> records;
        NumberKind numberKind = NumberKind::Unsigned;
    };

    static std::string difference(const Argument& argument, const std::string* expected, const Variables& variables);

    const Argument& at(std::size_t index, ArgumentForm::Kind kind) const;
    Argument& at(std::size_t index, ArgumentForm::Kind kind);

    std::vector<Argument> m_arguments;
};

} // namespace wire
