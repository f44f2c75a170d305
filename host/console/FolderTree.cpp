#include "FolderTree.h"

#include "Failure.h"
#include "Progress.h"
#include "Text.h"

#include <set>

namespace quorvex::console
{
namespace
{

// Box drawings in UTF-8.
constexpr const char* kJoint = "\xE2\x94\x9C\xE2\x94\x80 ";
constexpr const char* kLastJoint = "\xE2\x94\x94\xE2\x94\x80 ";
constexpr const char* kStem = "\xE2\x94\x82  ";

/// More than anybody has, few enough for the stack, and for the readers of JSON, which bound its nesting.
constexpr std::size_t kDeepest = 200;

struct Totals
{
    std::size_t folders = 0;
    std::size_t files = 0;
    std::uint64_t bytes = 0;
};

/// @param depth how many folders lie above this one
FolderTree ReadBranch(const FolderEntry& self, const FolderLister& list, std::set<std::string>& seen, std::size_t depth)
{
    if (depth > kDeepest)
        throw Failure("the folders are more than " + std::to_string(kDeepest) + " deep at the folder " + self.id +
                      ", which can be listed by itself");
    // A damaged server's circle would never end.
    if (!seen.insert(self.id).second)
        throw Failure("the server lists the folder " + self.id + " in two places");
    Folder folder = list(self.id);
    FolderTree tree{self, {}, std::move(folder.files)};
    for (const FolderEntry& each : folder.folders)
        tree.folders.push_back(ReadBranch(each, list, seen, depth + 1));
    return tree;
}

/// @param indent what stands before each line of what is in the folder
void AddLines(const FolderTree& tree, const std::string& indent, std::string& text)
{
    std::size_t left = tree.folders.size() + tree.files.size();
    const auto joint = [&] { return indent + (--left == 0 ? kLastJoint : kJoint); };
    for (const FolderTree& each : tree.folders)
    {
        text += joint() + Printable(each.self.name) + "/  [" + Printable(each.self.id) + "]\n";
        AddLines(each, indent + (left == 0 ? "   " : kStem), text);
    }
    for (const FileEntry& each : tree.files)
        text += joint() + Printable(each.name) + "  " + SizeText(each.size) + "  [" + Printable(each.key) + "]\n";
}

void AddTotals(const FolderTree& tree, Totals& totals)
{
    totals.folders += tree.folders.size();
    totals.files += tree.files.size();
    for (const FileEntry& each : tree.files)
        totals.bytes += each.size;
    for (const FolderTree& each : tree.folders)
        AddTotals(each, totals);
}

std::string Counted(std::size_t count, const std::string& noun)
{
    return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

} // namespace

FolderTree ReadTree(const FolderEntry& top, const FolderLister& list)
{
    std::set<std::string> seen;
    return ReadBranch(top, list, seen, 0);
}

std::string TreeText(const FolderTree& tree)
{
    std::string text = Printable(tree.self.name) + '\n';
    AddLines(tree, "", text);
    return text;
}

std::string TotalsText(const FolderTree& tree)
{
    Totals totals;
    AddTotals(tree, totals);
    return Counted(totals.folders, "folder") + ", " + Counted(totals.files, "file") + ", " + SizeText(totals.bytes);
}

Json::Value ToJson(const FolderTree& tree)
{
    Json::Value object = ToJson(tree.self);
    object["folders"] = ToJson(tree.folders);
    object["files"] = ToJson(tree.files);
    return object;
}

} // namespace quorvex::console
