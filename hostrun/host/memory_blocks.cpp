// hostrun/host/memory_blocks.cpp - the host's "MemoryBlock": a buffer of bytes that is an object.
#include "hostrun/host/memory_blocks.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <vector>

#include "hostrun/host/exceptions.h"
#include "hostrun/host/folder_items.h"
#include "hostrun/host/records.h"
#include "hostrun/host/registry.h"

namespace hostrun {
namespace {

constexpr std::int64_t kLargestFile = 1LL << 30;

using Bytes = std::vector<char>;

Bytes& BytesIn(Object* block) {
  return PayloadOf<Bytes>(block);
}

std::int32_t Size(Object* self, std::int32_t) {
  return MemoryBlockSize(self);
}

void SetSize(Object* self, std::int32_t, std::int32_t size) {
  if (size < 0)
    RaiseHostException("OutOfBoundsException",
                       "A MemoryBlock can't have " + std::to_string(size) + " bytes.");
  try {
    BytesIn(self).resize(static_cast<std::size_t>(size));
  } catch (const std::bad_alloc&) {
    RaiseHostException("OutOfMemoryException", "Not enough memory for " + std::to_string(size) + " bytes.");
  }
}

void ConstructWithSize(Object* self, std::int32_t size) {
  SetSize(self, 0, size);
}
void ConstructWithText(Object* self, HostString* text) {
  const std::string_view bytes = BytesOf(text);
  BytesIn(self).assign(bytes.begin(), bytes.end());
}

// "Byte 8 is outside", "Bytes 6 to 9 are not all inside".
std::string OutsideText(std::int32_t offset, std::int32_t count) {
  if (count < 0) return std::to_string(count) + " bytes can't be inside";
  const std::string first = std::to_string(offset);
  if (count < 2) return "Byte " + first + " is outside";
  return "Bytes " + first + " to " + std::to_string(std::int64_t{offset} + count - 1) + " are not all inside";
}

char* Place(Object* self, std::int32_t offset, std::int32_t count) {
  const std::int32_t size = MemoryBlockSize(self);
  if (offset < 0 || count < 0 || offset > size - count) {
    RaiseHostException("OutOfBoundsException", OutsideText(offset, count) + " of a MemoryBlock of " +
                                                   std::to_string(size) + " bytes.");
  }
  return BytesIn(self).data() + offset;
}

// Numbers lie in the machine's order: the first byte is the lowest.
template <class Stored, class Shown>
Shown Read(Object* self, std::int32_t offset) {
  Stored value{};
  std::memcpy(&value, Place(self, offset, sizeof value), sizeof value);
  return static_cast<Shown>(value);
}

template <class Stored, class Shown>
void Write(Object* self, std::int32_t offset, Shown shown) {
  const auto value = static_cast<Stored>(shown);
  std::memcpy(Place(self, offset, sizeof value), &value, sizeof value);
}

HostString* Text(Object* self, std::int32_t offset, std::int32_t length) {
  const char* const at = Place(self, offset, length);
  return NewString({at, static_cast<std::size_t>(length)});
}

void SetText(Object* self, std::int32_t offset, std::int32_t length, HostString* text) {
  char* const at = Place(self, offset, length);
  const std::string_view bytes = BytesOf(text).substr(0, static_cast<std::size_t>(length));
  std::memset(at, 0, static_cast<std::size_t>(length));
  std::memcpy(at, bytes.data(), bytes.size());
}

[[noreturn]] void FileTrouble(const char* what, const std::string& path) {
  const int error = errno;
  RaiseHostException("IOException", std::string("Can't ") + what + " " + path + ": " +
                                        (error == 0 ? "it is no file" : std::strerror(error)) + ".");
}

Object* Load(const std::string& path) {
  errno = 0;
  std::ifstream in(path, std::ios::binary);
  if (!in) FileTrouble("read", path);
  in.seekg(0, std::ios::end);
  const std::int64_t size = in.tellg();
  if (size < 0 || size > kLargestFile) FileTrouble("read", path);
  ObjectRef block = ObjectRef::Adopt(NewMemoryBlock(static_cast<std::int32_t>(size)));
  in.seekg(0);
  in.read(BytesIn(block.get()).data(), static_cast<std::streamsize>(size));
  if (!in) FileTrouble("read", path);
  return block.Detach();
}

void Save(Object* self, const std::string& path) {
  errno = 0;
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(BytesIn(self).data(), MemoryBlockSize(self));
  out.close();
  if (!out) FileTrouble("write", path);
}

Object* LoadFromItem(Object* item) {
  return Load(FolderItemPath(item));
}
Object* LoadFromPath(HostString* path) {
  return Load(Utf8Of(path));
}
void SaveToItem(Object* self, Object* item) {
  Save(self, FolderItemPath(item));
}
void SaveToPath(Object* self, HostString* path) {
  Save(self, Utf8Of(path));
}

std::array properties = {ReadWrite("Size", "integer", &Size, &SetSize)};

std::array methods = {
    MethodRecord("Constructor(size as integer)", &ConstructWithSize),
    MethodRecord("Constructor(bytes as string)", &ConstructWithText),
    MethodRecord("Byte(offset as integer) as integer", &Read<std::uint8_t, std::int32_t>),
    MethodRecord("Byte(offset as integer, assigns value as integer)", &Write<std::uint8_t, std::int32_t>),
    MethodRecord("UInt8Value(offset as integer) as integer", &Read<std::uint8_t, std::int32_t>),
    MethodRecord("UInt8Value(offset as integer, assigns value as integer)",
                 &Write<std::uint8_t, std::int32_t>),
    MethodRecord("UInt16Value(offset as integer) as integer", &Read<std::uint16_t, std::int32_t>),
    MethodRecord("UInt16Value(offset as integer, assigns value as integer)",
                 &Write<std::uint16_t, std::int32_t>),
    MethodRecord("Int32Value(offset as integer) as integer", &Read<std::int32_t, std::int32_t>),
    MethodRecord("Int32Value(offset as integer, assigns value as integer)",
                 &Write<std::int32_t, std::int32_t>),
    MethodRecord("SingleValue(offset as integer) as double", &Read<float, double>),
    MethodRecord("SingleValue(offset as integer, assigns value as double)", &Write<float, double>),
    MethodRecord("DoubleValue(offset as integer) as double", &Read<double, double>),
    MethodRecord("DoubleValue(offset as integer, assigns value as double)", &Write<double, double>),
    MethodRecord("StringValue(offset as integer, length as integer) as string", &Text),
    MethodRecord("StringValue(offset as integer, length as integer, assigns value as string)", &SetText),
    MethodRecord("SaveToFile(file as FolderItem)", &SaveToItem),
    MethodRecord("SaveToFile(path as string)", &SaveToPath),
};

std::array sharedMethods = {
    MethodRecord("LoadFromFile(file as FolderItem) as MemoryBlock", &LoadFromItem),
    MethodRecord("LoadFromFile(path as string) as MemoryBlock", &LoadFromPath),
};

Class& MemoryBlockClass() {
  static Class& cls = TheRegistry().ClassNamed("MemoryBlock");
  return cls;
}

}  // namespace

void RegisterMemoryBlockClass() {
  static constinit qvx::REALclassDefinition record = ClassRecord("MemoryBlock");
  SetMembers(record, methods, properties);
  SetSharedMethods(record, sharedMethods);
  TheRegistry().Register(record, Origin::Host, PayloadFor<Bytes>());
}

Object* NewMemoryBlock(std::int32_t size) {
  ObjectRef block = ObjectRef::Adopt(NewObject(MemoryBlockClass()));
  SetSize(block.get(), 0, size < 0 ? 0 : size);
  return block.Detach();
}

void* MemoryBlockBytes(Object* block) {
  return BytesIn(block).empty() ? nullptr : BytesIn(block).data();
}

std::int32_t MemoryBlockSize(Object* block) {
  return static_cast<std::int32_t>(BytesIn(block).size());
}

}  // namespace hostrun
