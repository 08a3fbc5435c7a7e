// hostrun/host/folder_items.h - the host's "FolderItem": a file or folder by its path, there or not.
#pragma once

#include <string>

#include "hostrun/host/objects.h"

struct FSRef;
struct HFSUniStr255;

namespace hostrun {

void RegisterFolderItemClass();

Object* NewFolderItem(const std::string& path);
// NilObjectException without an item.
std::string FolderItemPath(Object* item);

// Without `leafName`: the item itself, if it exists. With it: the item's parent folder, if that exists, and
// the item's own name. False when there is no reference to give.
bool FolderItemReference(Object* item, ::FSRef* reference, ::HFSUniStr255* leafName);

}  // namespace hostrun
