#include "wire/Arguments.h"

#include "support/Text.h"
#include "wire/Scanner.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <utility>

namespace wire
{
namespace
{

using Kind = ArgumentForm::Kind;

void parseRoom(Scanner& scanner, ArgumentForm& form)
{
    form.name = scanner.word();
    scanner.expect("[");
    form.number = scanner.number();
    scanner.expect("]");
}

/// @return which kind of records stands there, or nothing
std::string acceptRecordsKind(Scanner& scanner)
{
    for (const std::string& kind : recordsKinds())
        if (scanner.accept(kind + " "))
            return kind;
    return {};
}

/// {"k1", 198*"k2"}; nothing where the vector shall be empty.
std::vector<std::string> parseKeys(Scanner& scanner, const Variables& variables)
{
    std::vector<std::string> keys;
    if (!scanner.accept("{"))
        return keys;
    do
    {
        const std::size_t count = scanner.repetition();
        keys.insert(keys.end(), count, expand(scanner.quoted(), variables));
    } while (scanner.accept(","));
    scanner.expect("}");
    return keys;
}

ArgumentForm parseArgument(Scanner& scanner, const Variables& variables)
{
    ArgumentForm form;
    if (scanner.accept("null"))
        return form;
    if (scanner.accept("wide "))
    {
        form.kind = Kind::OutWide;
        parseRoom(scanner, form);
        if (scanner.accept("="))
            form.text = expand(scanner.quoted(), variables);
    }
    else if (scanner.accept("bytes "))
    {
        form.kind = Kind::OutBytes;
        parseRoom(scanner, form);
    }
    else if (scanner.accept("ids "))
    {
        form.kind = Kind::OutIds;
        parseRoom(scanner, form);
    }
    else if (scanner.accept("texts"))
    {
        form.kind = Kind::Texts;
        form.keys = parseKeys(scanner, variables);
    }
    else if (scanner.accept("out "))
    {
        form.kind = Kind::OutNumber;
        form.name = scanner.word();
        form.number = scanner.accept("=") ? scanner.number() : 0x5A5A5A5A;
    }
    else if (scanner.accept("data "))
    {
        form.kind = Kind::Data;
        form.text = expand(scanner.quoted(), variables);
    }
    else if (const std::string records = acceptRecordsKind(scanner); !records.empty())
    {
        form.kind = Kind::Records;
        form.recordsKind = records;
        form.name = scanner.word();
        form.keys = parseKeys(scanner, variables);
    }
    else if (scanner.isAt("\""))
    {
        form.kind = Kind::Text;
        form.text = expand(scanner.quoted(), variables);
    }
    else
    {
        form.kind = Kind::Number;
        form.number = scanner.number();
    }
    return form;
}

std::string quotedText(std::string_view bytes)
{
    return "\"" + support::escaped(bytes) + "\"";
}

/// The bytes between the quotation marks of an expected value.
std::string expectedBytes(std::string_view raw, const Variables& variables)
{
    Scanner scanner(raw);
    return expand(scanner.quoted(), variables);
}

template <typename Number>
Number load(std::string_view bytes)
{
    Number value;
    std::memcpy(&value, bytes.data(), sizeof value);
    return value;
}

std::string shownNumber(std::string_view bytes, NumberKind kind)
{
    if (kind == NumberKind::Floating)
    {
        char text[32];
        return {text, std::to_chars(text, text + sizeof text, load<double>(bytes)).ptr};
    }
    const bool isSigned = kind == NumberKind::Signed;
    if (bytes.size() == sizeof(long long))
        return isSigned ? std::to_string(load<long long>(bytes)) : std::to_string(load<unsigned long long>(bytes));
    return isSigned ? std::to_string(load<int>(bytes)) : std::to_string(load<unsigned>(bytes));
}

std::string differenceOfWide(std::string_view content, const std::string& expected)
{
    std::wstring text(content.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), content.data(), text.size() * sizeof(wchar_t));
    const auto end = text.find(L'\0');
    if (end == std::wstring::npos)
        return "no terminator within the room";
    const std::string actual = support::toUtf8(text.substr(0, end));
    return actual == expected ? "" : "is " + quotedText(actual) + " instead of " + quotedText(expected);
}

std::string differenceOfBytes(std::string_view content, const std::string& expected)
{
    const std::string_view behind = content.substr(std::min(expected.size(), content.size()));
    if (!content.starts_with(expected))
        return "is " + quotedText(content.substr(0, expected.size())) + " instead of " + quotedText(expected);
    if (behind != std::string(behind.size(), GuardedBuffer::fill))
        return "bytes behind the expected ones were written: " + quotedText(behind);
    return "";
}

/// The bytes of the numbers 17 4*42.
std::string expectedIds(std::string_view raw)
{
    std::string bytes;
    for (Scanner scanner(raw); !scanner.atEnd();)
    {
        const long long first = scanner.number();
        const bool isRepeated = scanner.accept("*");
        const auto id = static_cast<unsigned>(isRepeated ? scanner.number() : first);
        for (long long i = isRepeated ? first : 1; i > 0; --i)
            bytes.append(reinterpret_cast<const char*>(&id), sizeof id);
    }
    return bytes;
}

std::string differenceOfIds(std::string_view content, std::string_view expected)
{
    if (differenceOfBytes(content, expectedIds(expected)).empty())
        return "";
    std::string ids;
    for (; !content.empty(); content.remove_prefix(sizeof(unsigned)))
        ids += shownNumber(content.substr(0, sizeof(unsigned)), NumberKind::Unsigned) + " ";
    return "is " + ids + "instead of " + std::string(expected);
}

} // namespace

std::vector<ArgumentForm> parseArguments(std::string_view raw, const Variables& variables)
{
    std::vector<ArgumentForm> forms;
    Scanner scanner(raw);
    scanner.expect("(");
    if (!scanner.accept(")"))
    {
        do
            forms.push_back(parseArgument(scanner, variables));
        while (scanner.accept(","));
        scanner.expect(")");
    }
    if (!scanner.atEnd())
        throw CaseError("text behind the arguments");
    return forms;
}

GuardedBuffer::GuardedBuffer(std::size_t size, const std::wstring& before)
    : m_size(size), m_bytes(guard + size + guard, fill)
{
    const std::size_t used = before.empty() ? 0 : (before.size() + 1) * sizeof(wchar_t);
    if (used > size)
        throw CaseError("a text does not fit into its room");
    std::memcpy(data(), before.c_str(), used);
    m_before = content();
}

bool GuardedBuffer::isGuardIntact() const
{
    const std::string zone(guard, fill);
    return m_bytes.starts_with(zone) && m_bytes.ends_with(zone);
}

Arguments::Arguments(const std::vector<ArgumentForm>& forms)
{
    for (const ArgumentForm& form : forms)
    {
        Argument argument{form, support::toWide(form.text), std::nullopt, nullptr};
        if (form.kind == Kind::OutWide)
            argument.memory.emplace(static_cast<std::size_t>(form.number) * sizeof(wchar_t), argument.wideText);
        else if (form.kind == Kind::OutBytes)
            argument.memory.emplace(static_cast<std::size_t>(form.number));
        else if (form.kind == Kind::OutIds)
            argument.memory.emplace(static_cast<std::size_t>(form.number) * sizeof(unsigned));
        else if (form.kind == Kind::Records)
            argument.records = makeRecords(form.recordsKind, form.keys);
        m_arguments.push_back(std::move(argument));
    }
}

const Arguments::Argument& Arguments::at(std::size_t index, Kind kind) const
{
    if (index >= m_arguments.size())
        throw CaseError("too few arguments");
    const Argument& argument = m_arguments[index];
    if (argument.form.kind != kind)
        throw CaseError("argument " + std::to_string(index + 1) + " is of the wrong kind");
    return argument;
}

Arguments::Argument& Arguments::at(std::size_t index, Kind kind)
{
    return const_cast<Argument&>(std::as_const(*this).at(index, kind));
}

bool Arguments::isNull(std::size_t index) const
{
    return index < m_arguments.size() && m_arguments[index].form.kind == Kind::Null;
}

const wchar_t* Arguments::text(std::size_t index) const
{
    if (isNull(index))
        return nullptr;
    return at(index, Kind::Text).wideText.c_str();
}

const char* Arguments::bytes(std::size_t index) const
{
    if (isNull(index))
        return nullptr;
    return at(index, Kind::Text).form.text.c_str();
}

const std::vector<std::string>& Arguments::texts(std::size_t index) const
{
    return at(index, Kind::Texts).form.keys;
}

unsigned* Arguments::ids(std::size_t index)
{
    if (isNull(index))
        return nullptr;
    return static_cast<unsigned*>(at(index, Kind::OutIds).memory->data());
}

wchar_t* Arguments::wide(std::size_t index)
{
    if (isNull(index))
        return nullptr;
    return static_cast<wchar_t*>(at(index, Kind::OutWide).memory->data());
}

void* Arguments::buffer(std::size_t index)
{
    if (isNull(index))
        return nullptr;
    if (index < m_arguments.size() && m_arguments[index].form.kind == Kind::Data)
        return m_arguments[index].form.text.data();
    return at(index, Kind::OutBytes).memory->data();
}

std::size_t Arguments::room(std::size_t index) const
{
    return at(index, Kind::OutBytes).memory->content().size();
}

std::string Arguments::difference(const Argument& argument, const std::string* expected, const Variables& variables)
{
    if (argument.records)
        return argument.records->difference(expected == nullptr || *expected == "unchanged" ? nullptr : expected,
                                            variables);
    const GuardedBuffer& memory = *argument.memory;
    if (!memory.isGuardIntact())
        return "bytes outside of its room were written";
    const bool isNumber = argument.form.kind == Kind::OutNumber;
    if (expected == nullptr || *expected == "unchanged")
    {
        if (isNumber)
        {
            const std::string actual = shownNumber(memory.content(), argument.numberKind);
            return actual == std::to_string(argument.form.number) ? "" : "is " + actual + " instead of unchanged";
        }
        return memory.isUnchanged() ? "" : "is " + quotedText(memory.content()) + " instead of unchanged";
    }
    if (isNumber)
    {
        const std::string actual = shownNumber(memory.content(), argument.numberKind);
        return actual == *expected ? "" : "is " + actual + " instead of " + *expected;
    }
    if (argument.form.kind == Kind::OutIds)
        return differenceOfIds(memory.content(), *expected);
    const std::string bytes = expectedBytes(*expected, variables);
    return argument.form.kind == Kind::OutWide ? differenceOfWide(memory.content(), bytes)
                                               : differenceOfBytes(memory.content(), bytes);
}

std::vector<std::string> Arguments::differences(const std::map<std::string, std::string>& expected,
                                                const Variables& variables) const
{
    std::vector<std::string> found;
    std::size_t known = 0;
    for (const Argument& argument : m_arguments)
    {
        if (!argument.memory && !argument.records)
            continue;
        const auto value = expected.find(argument.form.name);
        known += value != expected.end() ? 1 : 0;
        const std::string text = difference(argument, value == expected.end() ? nullptr : &value->second, variables);
        if (!text.empty())
            found.push_back(argument.form.name + ": " + text);
    }
    if (known != expected.size())
        throw CaseError("an expected value has no argument of its name");
    return found;
}

} // namespace wire
