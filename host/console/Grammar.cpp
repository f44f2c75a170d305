#include "Grammar.h"

#include <algorithm>
#include <cstdint>

namespace quorvex::console
{
namespace
{

constexpr const char* kLoginHint = "Server, login and output are options of every command: see quorvex --help.";

std::string Footer(const std::string& examples)
{
    // The formatter adds the last line's end.
    return std::string(kLoginHint) + "\n\nExamples:\n" + examples.substr(0, examples.find_last_not_of('\n') + 1);
}

CLI::Validator IdOf(std::size_t longest)
{
    return {[longest](const std::string& id) {
                const auto isPlain = [](char c) {
                    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' ||
                           c == '_';
                };
                const bool isId = !id.empty() && id.size() <= longest && std::all_of(id.begin(), id.end(), isPlain);
                return isId ? std::string()
                            : "a key, id or code has 1 to " + std::to_string(longest) +
                                  " letters, digits, hyphens and underscores";
            },
            ""};
}

} // namespace

CommandGroup::CommandGroup(CLI::App& app, Invocation& invocation, const Service* service)
    : m_app(app), m_invocation(invocation), m_service(service)
{
}

CommandGroup::CommandGroup(CLI::App& parent, Invocation& invocation, const Service& service, const std::string& name,
                           const std::string& description, const std::string& examples)
    : CommandGroup(*parent.add_subcommand(name, description), invocation, &service)
{
    m_app.require_subcommand(1);
    m_app.footer(Footer(examples));
}

CLI::App& CommandGroup::Add(const std::string& name, const std::string& description, Command command,
                            const std::string& examples, const std::function<void()>& settle) const
{
    CLI::App* const app = m_app.add_subcommand(name, description);
    app->footer(Footer(examples));
    app->callback([app, &invocation = m_invocation, service = m_service, command, settle] {
        invocation.command = command;
        invocation.words = WordsOf(*app);
        invocation.service = service;
        settle();
    });
    return *app;
}

std::string WordsOf(const CLI::App& app)
{
    if (app.get_parent() == nullptr)
        return {};
    const std::string above = WordsOf(*app.get_parent());
    return above + (above.empty() ? "" : " ") + app.get_name();
}

CLI::Option* AddChoice(CLI::App& app, const std::string& name, std::string& text, const std::string& description,
                       const std::vector<std::string>& choices)
{
    std::string type;
    for (const std::string& choice : choices)
        type += (type.empty() ? "" : "|") + choice;
    return app.add_option(name, text, description)
        ->type_name(type)
        ->capture_default_str()
        ->check(CLI::IsMember(choices).description(""));
}

std::vector<std::string> ChoicesIn(const std::string& type)
{
    const auto isCapital = [](char c) { return c >= 'A' && c <= 'Z'; };
    const bool isList = !type.empty() && std::none_of(type.begin(), type.end(), isCapital);
    return isList ? CLI::detail::split(type, '|') : std::vector<std::string>();
}

CLI::Option* AddId(CLI::App& app, const std::string& name, std::string& text, const std::string& description,
                   const std::string& typeName, std::size_t longest)
{
    return app.add_option(name, text, description)->type_name(typeName)->check(IdOf(longest));
}

void AddIds(CLI::App& app, const std::string& name, std::vector<std::string>& texts, const std::string& description,
            const std::string& typeName, std::size_t longest)
{
    app.add_option(name, texts, description)->required()->type_name(typeName)->check(IdOf(longest));
}

void AddFile(CLI::App& app, Options& options, const std::string& description)
{
    app.add_option("file", options.file, description)->required()->type_name("FILE");
}

void AddFiles(CLI::App& app, Options& options, const std::string& description)
{
    app.add_option("files", options.files, description)->required()->type_name("FILE");
}

void AddOut(CLI::App& app, Options& options, const std::string& description)
{
    app.add_option("-o,--out", options.out, description)->type_name("FILE|FOLDER");
}

void AddPiece(CLI::App& app, Options& options)
{
    app.add_option("-o,--out", options.out, "The file to write it into")->required()->type_name("FILE");
}

void AddBlockSize(CLI::App& app, Options& options)
{
    app.add_option("--block-size", options.blockSize, "Size of a block, 1 byte to 256 MiB")
        ->type_name("SIZE")
        ->default_str("4MiB")
        ->transform(CLI::AsSizeValue(false).description(""))
        ->check(CLI::Range(std::uint64_t{1}, std::uint64_t{256} << 20).description(""));
}

void AddOffset(CLI::App& app, Options& options, const std::string& description)
{
    app.add_option("--offset", options.offset, description)
        ->type_name("SIZE")
        ->default_str("0")
        ->transform(CLI::AsSizeValue(false).description(""))
        ->check(CLI::Range(std::uint64_t{0}, std::uint64_t{UINT32_MAX}).description(""));
}

void AddLength(CLI::App& app, Options& options, const std::string& description)
{
    app.add_option("--length", options.length, description)
        ->type_name("SIZE")
        ->default_str("4MiB")
        ->transform(CLI::AsSizeValue(false).description(""))
        ->check(CLI::Range(std::uint64_t{1}, std::uint64_t{256} << 20).description(""));
}

} // namespace quorvex::console
