#include "NetDiskCommands.h"

#include "Failure.h"
#include "FolderTree.h"
#include "Progress.h"
#include "Session.h"
#include "Table.h"
#include "Text.h"
#include "Times.h"

#include <array>

namespace quorvex::console
{
namespace
{

/// The protocol has no way to ask for a folder's own name.
FolderEntry TopOf(const std::string& id)
{
    return {id, id == kTopFolder ? "/" : id + '/'};
}

std::string ListingText(const Folder& folder)
{
    Table table{"ID", "SIZE>", "CREATED", "NAME"};
    for (const FolderEntry& each : folder.folders)
        table.Add({each.id, "", "", each.name + '/'});
    for (const FileEntry& each : folder.files)
        table.Add({each.key, SizeText(each.size), LocalTimeText(each.created),
                   each.name + (each.complete ? "" : "  (not complete)")});
    return table.Text();
}

} // namespace

Report ListCommand(const Options& options)
{
    const auto disk = LogIn(options);
    const Folder folder = ListFolder(*disk, options.inFolder, options.inUtf8);
    FolderTree tree{TopOf(options.inFolder), {}, folder.files};
    for (const FolderEntry& each : folder.folders)
        tree.folders.push_back({each, {}, {}});
    Report report;
    report.AddData("id", options.inFolder);
    report.AddData("folders", ToJson(folder.folders));
    report.AddData("files", ToJson(folder.files));
    report.AddText(ListingText(folder));
    report.AddText(TotalsText(tree) + '\n');
    return report;
}

Report TreeCommand(const Options& options)
{
    const auto disk = LogIn(options);
    const FolderTree tree =
        ReadTree(TopOf(options.inFolder), [&disk](const std::string& id) { return ListFolder(*disk, id); });
    Report report;
    report.AddData("id", options.inFolder);
    report.AddData("folders", ToJson(tree.folders));
    report.AddData("files", ToJson(tree.files));
    report.AddText(TreeText(tree));
    report.AddText(TotalsText(tree) + '\n');
    return report;
}

Report MakeFolderCommand(const Options& options)
{
    const std::wstring name = JsonEscaped(options.name);
    const std::wstring parent = Wide(options.inFolder);
    CheckThatRequestHolds({name, parent});
    const auto disk = LogIn(options);
    std::array<wchar_t, 64> id{};
    Check(
        {disk->FolderAdd(name.c_str(), parent.c_str(), id.data(), static_cast<unsigned long>(id.size())), "FolderAdd"},
        "cannot make the folder " + options.name);
    Report report;
    report.Add("id", ToUtf8(id.data()));
    report.Add("name", options.name);
    report.Add("parent", options.inFolder);
    return report;
}

} // namespace quorvex::console
