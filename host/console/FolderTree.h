#pragma once

#include "Listings.h"

#include <functional>
#include <string>
#include <vector>

#include <json/value.h>

namespace quorvex::console
{

/// A folder with everything below it.
struct FolderTree
{
    FolderEntry self;
    std::vector<FolderTree> folders;
    std::vector<FileEntry> files;
};

/// Lists one folder.
using FolderLister = std::function<Folder(const std::string& id)>;

/// @throws Failure when a folder turns up twice, as no tree has it, or lies more than 200 folders deep
FolderTree ReadTree(const FolderEntry& top, const FolderLister& list);

/// One line for each folder and file, indented by lines that join them.
std::string TreeText(const FolderTree& tree);

/// "2 folders, 1 file, 1.5 KiB", the top not counted.
std::string TotalsText(const FolderTree& tree);

/// "id" and "name", the array "files" and, each of this shape, the array "folders".
Json::Value ToJson(const FolderTree& tree);

} // namespace quorvex::console
