// hostrun/sibling/image_wrapper.cpp - "NSImageQVX": a host object that carries a platform image.
#include <array>
#include <cstring>
#include <string>

#include "hostrun/host/exceptions.h"
#include "hostrun/host/folder_items.h"
#include "hostrun/host/records.h"
#include "hostrun/host/registry.h"
#include "hostrun/sibling/sibling.h"

namespace hostrun {
namespace {

constexpr std::int32_t kLargestSide = 16384;

struct Size {
  float width;
  float height;
};

PlatformId New(const char* className) {
  return Send<PlatformId>(TheObjectRuntime().getClass(className), "alloc");
}

void WantEmpty(Object* self) {
  if (NativePointerOf(self) != nullptr) {
    RaiseHostException("UnsupportedOperationException",
                       "Constructor called too often. Object is already initialized.");
  }
}

void LoadFile(Object* self, const std::string& path) {
  WantEmpty(self);
  const PlatformId name = NewPlatformString(path);
  auto* const image = Send<PlatformId>(New("NSImage"), "initWithContentsOfFile:", name);
  ReleasePlatformObject(name);
  const bool readable = image != nullptr && Send<signed char>(image, "isValid") != 0;
  if (!readable) {
    ReleasePlatformObject(image);
    RaiseHostException("IOException", "Can't read an image from " + path + ".");
  }
  Wrap(self, image);
}

void ConstructFromItem(Object* self, Object* item) {
  LoadFile(self, FolderItemPath(item));
}

void ConstructFromPath(Object* self, HostString* path) {
  LoadFile(self, Utf8Of(path));
}

// One bitmap of 8-bit red, green and blue, every pixel alike.
void ConstructFilled(Object* self, std::int32_t width, std::int32_t height, std::uint32_t color) {
  WantEmpty(self);
  if (width < 1 || height < 1 || width > kLargestSide || height > kLargestSide) {
    RaiseHostException("OutOfBoundsException", "An image can't be " + std::to_string(width) + " x " +
                                                   std::to_string(height) + " pixels: wanted 1 to " +
                                                   std::to_string(kLargestSide) + " for each side.");
  }
  auto* const space =
      Send<PlatformId>(TheObjectRuntime().getClass("NSString"),
                       "stringWithUTF8String:", static_cast<const char*>("NSDeviceRGBColorSpace"));
  constexpr std::int32_t kSamples = 3;
  auto* const bitmap =
      Send<PlatformId>(New("NSBitmapImageRep"),
                       "initWithBitmapDataPlanes:pixelsWide:pixelsHigh:bitsPerSample:samplesPerPixel:"
                       "hasAlpha:isPlanar:colorSpaceName:"
                       "bytesPerRow:bitsPerPixel:",
                       static_cast<void*>(nullptr), width, height, std::int32_t{8}, kSamples, false, false,
                       space, width * kSamples, std::int32_t{24});
  auto* pixel = Send<unsigned char*>(bitmap, "bitmapData");
  if (pixel == nullptr) {
    ReleasePlatformObject(bitmap);
    RaiseHostException("OutOfMemoryException", "Not enough memory for an image.");
  }
  for (std::int32_t i = 0; i < width * height; ++i) {
    for (const unsigned shift : {16U, 8U, 0U})
      *pixel++ = static_cast<unsigned char>((color >> shift) & 0xFFU);
  }
  auto* const image = Send<PlatformId>(
      New("NSImage"), "initWithSize:", Size{static_cast<float>(width), static_cast<float>(height)});
  Send<void>(image, "addRepresentation:", bitmap);
  ReleasePlatformObject(bitmap);
  Wrap(self, image);
}

Size SizeOf(Object* self) {
  return Send<Size>(NativePointerOf(self), "size");
}
std::int32_t Width(Object* self, std::int32_t) {
  return static_cast<std::int32_t>(SizeOf(self).width);
}
std::int32_t Height(Object* self, std::int32_t) {
  return static_cast<std::int32_t>(SizeOf(self).height);
}

void Destroy(qvx::REALobject self) {
  Unwrap(reinterpret_cast<Object*>(self));
}

std::array properties = {
    ReadOnly("width", "integer", &Width),
    ReadOnly("height", "integer", &Height),
};
std::array methods = {
    MethodRecord("Constructor(file as FolderItem)", &ConstructFromItem),
    MethodRecord("Constructor(path as string)", &ConstructFromPath),
    MethodRecord("Constructor(width as integer, height as integer, fill as Color = &c000000)",
                 &ConstructFilled),
};

constinit qvx::REALclassDefinition record = ClassRecord("NSImageQVX");

}  // namespace

void RegisterImageWrapper() {
  SetMembers(record, methods, properties);
  record.dataSize = 16;
  record.destructor = &Destroy;
  TheRegistry().Register(record, Origin::Sibling);
}

}  // namespace hostrun
