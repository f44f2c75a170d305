#include "Completion.h"

#include <functional>

namespace quorvex::console
{
namespace
{

/// The names under which the program is started. "./run" is bound with its folder, because "run" alone is anybody's.
constexpr const char* kPrograms = "quorvex quorvex.exe ./quorvex ./run";

/// What the tables below are read by. They give "file", "any", or "words" and the words.
constexpr const char* kReader = R"bash(
# _quorvex_upwards TABLE COMMAND KEY: the table's entry for the command, or for the group that it is in, and so on upwards.
_quorvex_upwards() {
    local table=$1 command=$2 key=$3
    while :; do
        REPLY=
        "$table" "$command" "$key"
        if [[ -n $REPLY || -z $command ]]; then return; fi
        if [[ $command == *' '* ]]; then command=${command% *}; else command=; fi
    done
}

_quorvex() {
    local current=${COMP_WORDS[COMP_CWORD]} command= option= behind_dashes= arguments=0 word i kind options=
    COMPREPLY=()
    for ((i = 1; i < COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        if [[ -n $option ]]; then
            # bash takes --option=value apart at the equals sign.
            if [[ $word != '=' ]]; then option=; fi
            continue
        fi
        if [[ -z $behind_dashes && $word == -- ]]; then
            behind_dashes=yes
        elif [[ -z $behind_dashes && $word == -?* ]]; then
            _quorvex_upwards _quorvex_value "$command" "$word"
            if [[ -n $REPLY ]]; then option=$word; fi
        else
            REPLY=
            _quorvex_commands "$command"
            if [[ " $REPLY " == *" $word "* ]]; then
                command=${command:+$command }$word
            else
                arguments=$((arguments + 1))
            fi
        fi
    done

    if [[ -n $option ]]; then
        if [[ $current == '=' ]]; then current=; fi
        _quorvex_upwards _quorvex_value "$command" "$option"
        kind=$REPLY
    elif [[ -z $behind_dashes && $current == -* ]]; then
        word=$command
        while :; do
            REPLY=
            _quorvex_options "$word"
            options+=" $REPLY"
            if [[ -z $word ]]; then break; fi
            if [[ $word == *' '* ]]; then word=${word% *}; else word=; fi
        done
        kind="words $options"
    else
        REPLY=
        _quorvex_commands "$command"
        kind=${REPLY:+words $REPLY}
        if [[ -z $kind ]]; then
            _quorvex_argument "$command" "$arguments"
            kind=$REPLY
        fi
    fi

    case $kind in
    file)
        compopt -o filenames 2>/dev/null || true
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
        ;;
    'words '*) mapfile -t COMPREPLY < <(compgen -W "${kind#words }" -- "$current") ;;
    esac
}
)bash";

std::string Joined(const std::vector<std::string>& words)
{
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

std::string KindOf(const ArgumentInfo& argument)
{
    if (!argument.choices.empty())
        return "words " + Joined(argument.choices);
    return argument.type.find("FILE") != std::string::npos ? "file" : "any";
}

/// One function that looks something up.
std::string Table(const std::string& name, const std::string& key, const std::string& entries)
{
    return "\n" + name + "() {\n    case " + key + " in\n" + entries + "    esac\n}\n";
}

std::string Entry(const std::string& key, const std::string& reply)
{
    return "    " + key + ") REPLY='" + reply + "' ;;\n";
}

std::string ForEachCommand(const std::vector<CommandInfo>& commands,
                           const std::function<std::string(const CommandInfo&)>& entriesOf)
{
    std::string entries;
    for (const CommandInfo& command : commands)
        entries += entriesOf(command);
    return entries;
}

/// The words of the commands right below a group.
std::vector<std::string> Below(const std::vector<CommandInfo>& commands, const std::string& group)
{
    const std::string start = group.empty() ? group : group + ' ';
    std::vector<std::string> words;
    for (const CommandInfo& each : commands)
    {
        const bool isBelow = each.words.size() > start.size() && each.words.starts_with(start);
        if (isBelow && each.words.find(' ', start.size()) == std::string::npos)
            words.push_back(each.words.substr(start.size()));
    }
    return words;
}

std::string OptionsOf(const CommandInfo& command)
{
    std::vector<std::string> names;
    for (const ArgumentInfo& option : command.options)
        names.insert(names.end(), option.names.begin(), option.names.end());
    return Entry('\'' + command.words + '\'', Joined(names));
}

std::string ValuesOf(const CommandInfo& command)
{
    std::string entries;
    for (const ArgumentInfo& option : command.options)
        if (!option.type.empty())
            for (const std::string& name : option.names)
                entries += Entry('\'' + command.words + '/' + name + '\'', KindOf(option));
    return entries;
}

std::string ArgumentsOf(const CommandInfo& command)
{
    std::string entries;
    for (std::size_t i = 0; i < command.arguments.size(); ++i)
    {
        const std::string place = command.arguments[i].isRepeated ? "*" : std::to_string(i);
        entries += Entry('\'' + command.words + "/'" + place, KindOf(command.arguments[i]));
    }
    return entries;
}

} // namespace

std::string BashCompletion(const std::vector<CommandInfo>& commands)
{
    const auto groups = [&commands](const CommandInfo& each) {
        return each.isGroup ? Entry('\'' + each.words + '\'', Joined(Below(commands, each.words))) : std::string();
    };
    return "# Completes the command line of quorvex in bash. Written by: quorvex completion bash\n" +
           Table("_quorvex_commands", "$1", ForEachCommand(commands, groups)) +
           Table("_quorvex_options", "$1", ForEachCommand(commands, OptionsOf)) +
           Table("_quorvex_value", "$1/$2", ForEachCommand(commands, ValuesOf)) +
           Table("_quorvex_argument", "$1/$2", ForEachCommand(commands, ArgumentsOf)) + kReader +
           "\ncomplete -F _quorvex " + kPrograms + '\n';
}

} // namespace quorvex::console
