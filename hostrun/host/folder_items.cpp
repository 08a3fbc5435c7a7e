// hostrun/host/folder_items.cpp - the host's "FolderItem": a file or folder by its path, there or not.
#include "hostrun/host/folder_items.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "bundle/host/types.h"
#include "hostrun/host/exceptions.h"
#include "hostrun/host/platform_library.h"
#include "hostrun/host/records.h"
#include "hostrun/host/registry.h"
#include "hostrun/host/strings.h"
#include "hostrun/host/text.h"

// As the contract lays it out: 512 bytes.
struct HFSUniStr255 {
  std::uint16_t length;
  std::uint16_t unicode[255];
};
static_assert(sizeof(HFSUniStr255) == 512);

namespace hostrun {
namespace {

namespace fs = std::filesystem;

fs::path& PathIn(Object* item) {
  return PayloadOf<fs::path>(item);
}

HostString* TextOf(const fs::path& path) {
  return NewString(path.native());
}

// Absolute and without a slash at its end: then its parent and its name are what one expects.
void SetPath(Object* self, const std::string& text) {
  if (text.empty()) RaiseHostException("InvalidArgumentException", "Wanted a path, found an empty string.");
  if (text.find('\0') != std::string::npos) {
    RaiseHostException("InvalidArgumentException", "Wanted a path, found one with a zero byte in it.");
  }
  std::error_code error;
  fs::path path = fs::absolute(text, error).lexically_normal();
  if (!path.has_filename() && path.has_relative_path()) path = path.parent_path();
  PathIn(self) = std::move(path);
}

void Construct(Object* self, HostString* path) {
  SetPath(self, Utf8Of(path));
}

HostString* Name(Object* self, std::int32_t) {
  return TextOf(PathIn(self).filename());
}
HostString* NativePath(Object* self, std::int32_t) {
  return TextOf(PathIn(self));
}

bool Exists(Object* self, std::int32_t) {
  std::error_code error;
  return fs::exists(fs::symlink_status(PathIn(self), error));
}

bool IsFolder(Object* self, std::int32_t) {
  std::error_code error;
  return fs::is_directory(PathIn(self), error);
}

std::int64_t Length(Object* self, std::int32_t) {
  std::error_code error;
  const auto size = fs::file_size(PathIn(self), error);
  return error ? 0 : static_cast<std::int64_t>(size);
}

Object* Parent(Object* self, std::int32_t) {
  const fs::path& path = PathIn(self);
  return path.has_relative_path() ? NewFolderItem(path.parent_path().native()) : nullptr;
}

Object* Child(Object* self, HostString* name) {
  return NewFolderItem((PathIn(self) / Utf8Of(name)).native());
}

void Check(const std::error_code& error, const char* what, Object* self) {
  if (error) {
    RaiseHostException("IOException", std::string("Can't ") + what + " " + PathIn(self).native() + ": " +
                                          error.message() + ".");
  }
}

void Delete(Object* self) {
  std::error_code error;
  const bool removed = fs::remove(PathIn(self), error);
  Check(error     ? error
        : removed ? std::error_code()
                  : std::make_error_code(std::errc::no_such_file_or_directory),
        "delete", self);
}

void CreateFolder(Object* self) {
  std::error_code error;
  fs::create_directory(PathIn(self), error);
  Check(error, "create", self);
}

Object* GetFolderItem(HostString* path) {
  return NewFolderItem(Utf8Of(path));
}

Object* Temporary() {
  std::error_code error;
  return NewFolderItem(fs::temp_directory_path(error).native());
}

Object* CurrentFolder() {
  return NewFolderItem(".");
}

// A new folder that no other program uses; whoever made it deletes it.
Object* TemporaryFolder() {
  std::error_code error;
  std::string path = (fs::temp_directory_path(error) / "hostrun-XXXXXX").native();
  if (mkdtemp(path.data()) == nullptr) {
    RaiseHostException("IOException", "Can't create " + path + ": " + std::strerror(errno) + ".");
  }
  return NewFolderItem(path);
}

std::array properties = {
    ReadOnly("Name", "string", &Name),           ReadOnly("NativePath", "string", &NativePath),
    ReadOnly("Path", "string", &NativePath),     ReadOnly("ShellPath", "string", &NativePath),
    ReadOnly("Exists", "boolean", &Exists),      ReadOnly("IsFolder", "boolean", &IsFolder),
    ReadOnly("Directory", "boolean", &IsFolder), ReadOnly("Length", "int64", &Length),
    ReadOnly("Parent", "FolderItem", &Parent),
};

std::array methods = {
    MethodRecord("Constructor(path as string)", &Construct),
    MethodRecord("Child(name as string) as FolderItem", &Child),
    MethodRecord("Delete", &Delete),
    MethodRecord("Remove", &Delete),
    MethodRecord("CreateFolder", &CreateFolder),
};

std::array specialFolders = {
    MethodRecord("Temporary as FolderItem", &Temporary),
    MethodRecord("CurrentFolder as FolderItem", &CurrentFolder),
    MethodRecord("NewTemporary as FolderItem", &TemporaryFolder),
};

}  // namespace

void RegisterFolderItemClass() {
  static constinit qvx::REALclassDefinition record = ClassRecord("FolderItem");
  SetMembers(record, methods, properties);
  TheRegistry().Register(record, Origin::Host, PayloadFor<fs::path>());
  static constinit qvx::REALclassDefinition folders = ClassRecord("SpecialFolder");
  SetSharedMethods(folders, specialFolders);
  TheRegistry().Register(folders, Origin::Host);
  TheRegistry().AddFunction("GetFolderItem(path as string) as FolderItem", Proc(&GetFolderItem));
}

Object* NewFolderItem(const std::string& path) {
  ObjectRef item = ObjectRef::Adopt(NewObject(TheRegistry().ClassNamed("FolderItem")));
  SetPath(item.get(), path);
  return item.Detach();
}

std::string FolderItemPath(Object* item) {
  if (item == nullptr) RaiseHostException("NilObjectException", "The folder item is nil.");
  return PathIn(item).native();
}

bool FolderItemReference(Object* item, ::FSRef* reference, ::HFSUniStr255* leafName) {
  const fs::path& path = PathIn(item);
  if (ThePlatform().makeFileReference == nullptr || reference == nullptr) return false;
  if (leafName == nullptr) return Exists(item, 0) && ThePlatform().makeFileReference(path.c_str(), reference);
  const auto name = DecodeStrictly(path.filename().native(), qvx::kEncodingUTF8);
  if (!name) return false;
  const std::u16string units = Utf16(*name);
  if (units.size() > std::size(leafName->unicode)) return false;
  std::error_code error;
  const fs::path parent = path.parent_path();
  if (!fs::is_directory(parent, error) || !ThePlatform().makeFileReference(parent.c_str(), reference))
    return false;
  leafName->length = static_cast<std::uint16_t>(units.size());
  std::copy(units.begin(), units.end(), leafName->unicode);
  return true;
}

}  // namespace hostrun
