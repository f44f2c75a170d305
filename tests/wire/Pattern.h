#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace wire
{

/// A mistake in a case file.
class CaseError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// What "${name}" stands for in one run: host, port, dir ...
using Variables = std::map<std::string, std::string, std::less<>>;

/// Bytes with places that are known only when they are seen. README.md lists the escapes and placeholders.
class Pattern
{
public:
    Pattern() = default;
    Pattern(std::string_view raw, const Variables& variables);

    void append(const Pattern& other);
    void appendBytes(std::string_view bytes);
    void appendPieceBreak();

    /// Puts the number of bytes behind the first empty line in the place of every "${length}".
    void resolveLength();

    struct Match
    {
        bool matched = false;
        std::string boundary; ///< as it was met, also when the rest does not match
    };
    Match match(std::string_view bytes) const;

    /// The bytes of a pattern that has nothing left to be seen.
    std::string bytes() const;

    /// The same, taken apart at the piece breaks.
    std::vector<std::string> pieces() const;

    /// The pattern for a reader; a boundary that has been met takes its place.
    std::string text(std::string_view boundary = {}) const;

private:
    enum class Kind
    {
        Literal,
        Length,
        Boundary,
        Any,
        Number,
        SourceTag,
        PieceBreak
    };
    struct Token
    {
        Kind kind;
        std::string text;
    };

    void appendPlaceholder(std::string_view name, const Variables& variables);
    void appendSystemError(std::string_view code);
    bool matchFrom(std::size_t token, std::string_view bytes, std::string& boundary) const;

    std::vector<Token> m_tokens;
};

/// Resolves escapes and placeholders in a text that has nothing left to be seen.
std::string expand(std::string_view raw, const Variables& variables);

} // namespace wire
