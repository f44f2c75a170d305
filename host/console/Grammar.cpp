#include "Grammar.h"

#include <algorithm>
#include <cstdint>

namespace quorvex::console
{
namespace
{

constexpr const char* kLoginHint = "\nServer, login and output are options of every command: see quorvex --help.";

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

CommandGroup::CommandGroup(CLI::App& parent, Invocation& invocation, const Service& service, const std::string& name,
                           const std::string& description)
    : m_app(*parent.add_subcommand(name, description)), m_invocation(invocation), m_service(service)
{
    m_app.require_subcommand(1);
}

CLI::App& CommandGroup::Add(const std::string& name, const std::string& description, Command command,
                            const std::string& examples, const std::function<void()>& settle) const
{
    CLI::App* const app = m_app.add_subcommand(name, description);
    app->footer("Examples:\n" + examples + kLoginHint);
    app->callback([&invocation = m_invocation, &service = m_service, command, settle] {
        invocation.command = command;
        invocation.service = &service;
        settle();
    });
    return *app;
}

CLI::Option* AddId(CLI::App& app, const std::string& name, std::string& text, const std::string& description,
                   const std::string& typeName, std::size_t longest)
{
    return app.add_option(name, text, description)->type_name(typeName)->check(IdOf(longest));
}

void AddIds(CLI::App& app, const std::string& name, std::vector<std::string>& texts, const std::string& description,
            const std::string& typeName)
{
    app.add_option(name, texts, description)->required()->type_name(typeName)->check(IdOf(kLongestId));
}

void AddFile(CLI::App& app, Options& options, const std::string& description)
{
    app.add_option("file", options.file, description)->required()->type_name("FILE");
}

void AddOut(CLI::App& app, Options& options, const std::string& description)
{
    app.add_option("-o,--out", options.out, description)->type_name("FILE|FOLDER");
}

void AddBlockSize(CLI::App& app, Options& options)
{
    app.add_option("--block-size", options.blockSize, "Size of a block, 1 byte to 256 MiB")
        ->type_name("SIZE")
        ->default_str("4MiB")
        ->transform(CLI::AsSizeValue(false).description(""))
        ->check(CLI::Range(std::uint64_t{1}, std::uint64_t{256} << 20).description(""));
}

} // namespace quorvex::console
