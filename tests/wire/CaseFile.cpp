#include "wire/CaseFile.h"

#include "support/LogCapture.h"
#include "support/TempFolder.h"
#include "wire/Compression.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace wire
{
namespace
{

/// Takes the first word off a text, and the blank behind it.
std::string_view takeWord(std::string_view& rest)
{
    const auto end = std::min(rest.find(' '), rest.size());
    const std::string_view word = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return word;
}

std::vector<std::string> words(std::string_view text)
{
    std::vector<std::string> found;
    while (!text.empty())
        if (const auto word = takeWord(text); !word.empty())
            found.emplace_back(word);
    return found;
}

template <typename Number>
Number number(std::string_view text)
{
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size())
        throw CaseError("not a number: " + std::string(text));
    return value;
}

std::vector<std::string_view> lines(std::string_view content)
{
    std::vector<std::string_view> found;
    while (!content.empty())
    {
        const auto end = std::min(content.find('\n'), content.size());
        std::string_view line = content.substr(0, end);
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        found.push_back(line);
        content.remove_prefix(std::min(end + 1, content.size()));
    }
    return found;
}

unsigned levelBits(std::string_view names)
{
    unsigned bits = 0;
    for (const std::string& name : words(names))
    {
        if (name != "TRACE" && name != "DEBUG" && name != "ERROR" && name != "none")
            throw CaseError("unknown level " + name);
        bits |= name == "TRACE" ? 1u : name == "DEBUG" ? 2u : name == "ERROR" ? 8u : 0u;
    }
    return bits;
}

std::string hexadecimal(std::size_t value)
{
    char digits[16];
    const auto [end, error] = std::to_chars(digits, digits + sizeof digits, value, 16);
    return {digits, end};
}

/// Collects one exchange.
class ExchangeParser
{
public:
    ExchangeParser(std::size_t line, const HeadTemplates& heads, const Variables& variables)
        : m_heads(heads), m_variables(variables)
    {
        m_request.line = line;
    }

    /// A line that begins with ">", without that.
    void requestLine(std::string_view rest)
    {
        if (rest.starts_with("head "))
            m_request.pattern.append(Pattern(head(rest.substr(5)), m_variables));
        else
            appendLine(m_request.pattern, rest);
    }

    /// A line that begins with "<", without that.
    void replyLine(std::string_view rest)
    {
        if (rest.empty() || rest.front() == ' ' || rest.front() == '-')
        {
            appendLine(m_reply, rest);
            return;
        }
        const std::string_view directive = takeWord(rest);
        if (directive == "reply")
            appendWholeReply(rest);
        else if (directive == "gzip")
            appendCompressed(rest, Encoding::Gzip);
        else if (directive == "zlib")
            appendCompressed(rest, Encoding::Zlib);
        else if (directive == "rawdeflate")
            appendCompressed(rest, Encoding::RawDeflate);
        else if (directive == "chunk")
            appendChunk(rest);
        else if (directive == "piece")
            m_reply.appendPieceBreak();
        else if (directive == "bytewise")
            m_exchange.byteByByte = true;
        else if (directive == "reset")
            m_exchange.ending = support::Exchange::Ending::Reset;
        else if (directive == "hold")
            m_exchange.ending = support::Exchange::Ending::Hold;
        else if (directive == "early")
            m_exchange.bodyBytesBeforeReply = number<std::size_t>(rest);
        else
            throw CaseError("unknown reply directive " + std::string(directive));
    }

    void finish(CaseFile& file)
    {
        m_request.pattern.resolveLength();
        m_reply.resolveLength();
        m_exchange.pieces = m_reply.pieces();
        file.requests.push_back(std::move(m_request));
        file.replies.push_back(std::move(m_exchange));
    }

private:
    /// " text" is a line with its end, "- text" has none.
    void appendLine(Pattern& pattern, std::string_view rest) const
    {
        const bool ends = !rest.starts_with('-');
        if (!ends)
            rest.remove_prefix(1);
        if (rest.starts_with(' '))
            rest.remove_prefix(1);
        else if (!rest.empty())
            throw CaseError("a blank is missing");
        pattern.append(Pattern(rest, m_variables));
        if (ends)
            pattern.appendBytes("\r\n");
    }

    std::string head(std::string_view rest) const
    {
        const std::string name(takeWord(rest));
        const auto found = m_heads.find(name);
        if (found == m_heads.end())
            throw CaseError("unknown head " + name);
        std::string text = found->second;
        const std::vector<std::string> arguments = words(rest);
        for (std::size_t i = 0; i < arguments.size(); ++i)
            if (const auto at = text.find("$" + std::to_string(i + 1)); at != std::string::npos)
                text.replace(at, 2, arguments[i]);
        return text;
    }

    void appendWholeReply(std::string_view rest)
    {
        const std::string_view status = takeWord(rest);
        m_reply.appendBytes("HTTP/1.1 " + std::string(status) + " Answer\r\n");
        m_reply.append(Pattern("Content-Length: ${length}\\r\\nConnection: close\\r\\n\\r\\n", m_variables));
        m_reply.append(Pattern(rest, m_variables));
    }

    void appendCompressed(std::string_view rest, Encoding encoding)
    {
        static constexpr std::string_view cutOption = "cut=";
        std::size_t cut = 0;
        if (rest.starts_with(cutOption))
            cut = number<std::size_t>(takeWord(rest).substr(cutOption.size()));
        const std::string packed = compress(expand(rest, m_variables), encoding);
        if (cut > packed.size())
            throw CaseError("fewer bytes than are to be cut off");
        m_reply.appendBytes(std::string_view(packed).substr(0, packed.size() - cut));
    }

    void appendChunk(std::string_view rest)
    {
        const std::string data = expand(rest, m_variables);
        m_reply.appendBytes(hexadecimal(data.size()) + "\r\n" + data + "\r\n");
    }

    const HeadTemplates& m_heads;
    const Variables& m_variables;
    ExpectedRequest m_request;
    Pattern m_reply;
    support::Exchange m_exchange;
};

/// Reads a whole case, line by line.
class CaseParser
{
public:
    CaseParser(const HeadTemplates& heads, const Variables& variables) : m_heads(heads), m_variables(variables) {}

    CaseFile parse(std::string_view content)
    {
        for (const std::string_view line : lines(content))
        {
            ++m_line;
            try
            {
                parseLine(line);
            }
            catch (const CaseError& error)
            {
                throw CaseError("line " + std::to_string(m_line) + ": " + error.what());
            }
        }
        finishExchange();
        return std::move(m_file);
    }

private:
    void parseLine(std::string_view line)
    {
        if (line.empty() || line.front() == '#')
            return;
        if (line.front() == '>')
            exchange().requestLine(line.substr(1));
        else if (line.front() == '<')
            exchange().replyLine(line.substr(1));
        else
        {
            finishExchange();
            const std::string_view word = takeWord(line);
            parseDirective(word, line);
        }
    }

    void parseDirective(std::string_view word, std::string_view rest)
    {
        if (word == "exchange")
            m_exchange.emplace(m_line, m_heads, m_variables);
        else if (word == "client")
            parseClient(rest);
        else if (word == "call")
            parseCall(rest);
        else if (word == "result")
            lastCall().result = rest;
        else if (word == "out")
        {
            const std::string name(takeWord(rest));
            lastCall().outs[name] = rest;
        }
        else if (word == "fail")
            parseFail(rest);
        else if (word == "levels")
            m_file.steps.emplace_back(LevelsStep{levelBits(rest)});
        else if (word == "folder")
            m_file.steps.emplace_back(FolderStep{expand(rest, m_variables)});
        else if (word == "file")
        {
            const std::string name = expand(takeWord(rest), m_variables);
            m_file.steps.emplace_back(FileStep{name, expand(rest, m_variables)});
        }
        else if (word == "sparse")
        {
            const std::string name = expand(takeWord(rest), m_variables);
            m_file.steps.emplace_back(SparseStep{name, number<unsigned long long>(rest)});
        }
        else if (word == "after")
        {
            const std::string name = expand(takeWord(rest), m_variables);
            m_file.filesAfterwards.emplace_back(name, expand(rest, m_variables));
        }
        else if (word == "absent")
            m_file.absentAfterwards.push_back(expand(rest, m_variables));
        else if (word == "exact")
            m_file.exactLevels = words(rest);
        else if (word == "log")
        {
            const std::string level(takeWord(rest));
            m_file.log.push_back({m_line, level, Pattern(rest, m_variables)});
        }
        else
            throw CaseError("unknown directive " + std::string(word));
    }

    void parseClient(std::string_view rest)
    {
        const auto open = std::min(rest.find('('), rest.size());
        m_file.steps.emplace_back(
            ClientStep{std::string(rest.substr(0, open)), parseArguments(rest.substr(open), m_variables)});
    }

    void parseCall(std::string_view rest)
    {
        const auto open = std::min(rest.find('('), rest.size());
        CallStep step;
        step.line = m_line;
        step.operation = rest.substr(0, open);
        step.arguments = parseArguments(rest.substr(open), m_variables);
        m_file.steps.emplace_back(std::move(step));
    }

    void parseFail(std::string_view rest)
    {
        const std::vector<std::string> parts = words(rest);
        if (parts.size() < 3 || parts.size() > 4)
            throw CaseError("fail: function, which call, error, and perhaps how many");
        m_file.steps.emplace_back(FailStep{parts[0], number<unsigned>(parts[1]), number<unsigned long>(parts[2]),
                                           parts.size() > 3 ? number<unsigned>(parts[3]) : 1});
    }

    CallStep& lastCall()
    {
        if (m_file.steps.empty() || !std::holds_alternative<CallStep>(m_file.steps.back()))
            throw CaseError("no call before this line");
        return std::get<CallStep>(m_file.steps.back());
    }

    ExchangeParser& exchange()
    {
        if (!m_exchange)
            throw CaseError("no exchange before this line");
        return *m_exchange;
    }

    void finishExchange()
    {
        if (m_exchange)
            m_exchange->finish(m_file);
        m_exchange.reset();
    }

    const HeadTemplates& m_heads;
    const Variables& m_variables;
    CaseFile m_file;
    std::optional<ExchangeParser> m_exchange;
    std::size_t m_line = 0;
};

} // namespace

HeadTemplates readHeadTemplates(const std::filesystem::path& path)
{
    HeadTemplates heads;
    std::string* current = nullptr;
    const std::string content = support::readFile(path);
    for (const std::string_view line : lines(content))
    {
        if (line.starts_with('#'))
            continue;
        if (line.starts_with('[') && line.ends_with(']'))
            current = &heads[std::string(line.substr(1, line.size() - 2))];
        else if (current != nullptr && !line.empty())
            current->append(line).append("\\r\\n");
    }
    for (auto& [name, text] : heads)
        text.append("\\r\\n");
    return heads;
}

CaseFile parseCase(std::string_view content, const HeadTemplates& heads, const Variables& variables)
{
    return CaseParser(heads, variables).parse(content);
}

} // namespace wire
