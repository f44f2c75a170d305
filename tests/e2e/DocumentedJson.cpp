#include "DocumentedJson.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <sstream>
#include <vector>

namespace quorvex::e2e
{

namespace
{

/// Names of members, and whether they have to be there.
using Members = std::map<std::string, bool>;

struct Shape
{
    Members members;
    std::map<std::string, Members> lists; ///< members of the objects in a list
};

std::vector<std::string> Split(const std::string& text, char separator)
{
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);)
    {
        parts.push_back(part);
    }
    return parts;
}

/// The text between backquotes; empty when there is none.
std::string Quoted(const std::string& text)
{
    const std::size_t start = text.find('`');
    const std::size_t end = text.find('`', start + 1);
    return start == std::string::npos || end == std::string::npos ? std::string()
                                                                  : text.substr(start + 1, end - start - 1);
}

/// Reads "`key`, `folder`?".
Members MembersIn(const std::string& text)
{
    Members members;
    for (const std::string& part : Split(text, ','))
    {
        if (const std::string name = Quoted(part); !name.empty())
        {
            members[name] = part.find('?') == std::string::npos;
        }
    }
    return members;
}

/// Reads a row of the manual's table: "| `command` | members | `list`: members; `list`: members |".
Shape ShapeIn(const std::string& row)
{
    const std::vector<std::string> cells = Split(row, '|');
    Shape shape;
    shape.members = MembersIn(cells.at(2));
    for (const std::string& list : Split(cells.at(3), ';'))
    {
        if (const std::size_t colon = list.find(':'); colon != std::string::npos)
        {
            shape.lists[Quoted(list.substr(0, colon))] = MembersIn(list.substr(colon));
        }
    }
    return shape;
}

std::map<std::string, Shape> ReadManual()
{
    std::map<std::string, Shape> shapes;
    std::ifstream manual(QUORVEX_CONSOLE_MANUAL);
    bool isInTable = false;
    for (std::string line; std::getline(manual, line);)
    {
        if (line.starts_with("| Command | Members |"))
        {
            isInTable = true;
        }
        else if (isInTable && line.starts_with("| `"))
        {
            shapes[Quoted(line)] = ShapeIn(line);
        }
        else if (isInTable && !line.starts_with("|--"))
        {
            break;
        }
    }
    return shapes;
}

std::string Difference(const Json::Value& object, const Members& expected, const std::string& where)
{
    std::string difference;
    for (const std::string& name : object.getMemberNames())
    {
        if (!expected.contains(name))
        {
            difference += where + " has a member " + name + " that the manual does not tell of\n";
        }
    }
    for (const auto& [name, isRequired] : expected)
    {
        if (isRequired && !object.isMember(name))
        {
            difference += where + " lacks the member " + name + '\n';
        }
    }
    return difference;
}

void AddFailure(Members& members)
{
    for (const char* const name : {"code", "meaning", "message", "operation"})
    {
        members[name] = true;
    }
}

std::string DifferenceInLists(const Json::Value& object, const Shape& shape)
{
    std::string difference;
    for (const auto& [name, members] : shape.lists)
    {
        for (const Json::Value& element : object[name])
        {
            Members expected = members;
            if (element.isMember("ok") && !element["ok"].asBool())
            {
                expected = {{"given", true}, {"ok", true}};
                AddFailure(expected);
            }
            difference += Difference(element, expected, "an object in " + name);
        }
    }
    return difference;
}

} // namespace

std::string DifferenceFromManual(const Json::Value& object)
{
    static const std::map<std::string, Shape> shapes = ReadManual();
    const std::string command = object["command"].asString();
    const auto known = shapes.find(command);
    if (!command.empty() && known == shapes.end())
    {
        return "the manual does not tell of the command " + command + '\n';
    }
    Shape shape = known == shapes.end() ? Shape() : known->second;
    if (!object["ok"].asBool())
    {
        // What was done before or beside the failure may be told or not.
        for (auto& [name, isRequired] : shape.members)
        {
            isRequired = false;
        }
        AddFailure(shape.members);
    }
    shape.members["ok"] = true;
    shape.members["command"] = true;
    return Difference(object, shape.members, "the object") + DifferenceInLists(object, shape);
}

} // namespace quorvex::e2e
