// tests/hostrun/unit/table_test.cpp - every declaration of every class of the bundle, called once through the
// runner's own dispatch with sensible arguments.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <optional>
#include <set>

#include "hostrun/commands/start.h"
#include "hostrun/host/arrays.h"
#include "hostrun/host/call.h"
#include "hostrun/host/exceptions.h"
#include "hostrun/host/folder_items.h"
#include "hostrun/host/platform_library.h"
#include "hostrun/host/registry.h"
#include "hostrun/sibling/platform_objects.h"
#include "tests/bundle/unit/declarations.h"

namespace hostrun {
namespace {

HostOptions options;

const Method& Find(const char* cls, const char* name, bool shared, std::size_t form = 0) {
  return *TheRegistry().ClassNamed(cls).MethodsNamed(name, shared).at(form);
}

// A colour is written only where its type has been declared, which no method of the bundle does.
void DeclareColorOnPasteboard() {
  const ObjectRuntime& runtime = TheObjectRuntime();
  const PlatformId type = NewPlatformString("NSColorPboardType");
  const auto types = Send<PlatformId>(runtime.getClass("NSArray"), "arrayWithObject:", type);
  const auto board = Send<PlatformId>(runtime.getClass("NSPasteboard"), "generalPasteboard");
  Send<std::int32_t>(board, "declareTypes:owner:", types, static_cast<PlatformId>(nullptr));
  ReleasePlatformObject(type);
}

// One set of things to call with: a colour, a space, a filled list, an image, a file.
class Things {
 public:
  Things() {
    folder_ = std::filesystem::temp_directory_path() / ("table-test-" + std::to_string(getpid()));
    std::filesystem::create_directory(folder_);
    color_ = Invoke(Find("NSColorQVX", "colorWithDeviceRGB", true), nullptr,
                    {Value::Double(1), Value::Double(0.5), Value::Double(0.25), Value::Double(1)});
    space_ = Invoke(Find("NSColorSpaceQVX", "sRGBColorSpace", true), nullptr, {});
    profile_ = Invoke(Find("NSColorSpaceQVX", "ICCProfileData", false), space_.object(), {});
    Invoke(Find("MemoryBlock", "SaveToFile", false, 1), profile_.object(),
           {Value::Text((folder_ / "profile.icc").native())});
    DeclareColorOnPasteboard();
    Invoke(Find("NSColorQVX", "writeToPasteboard", false), color_.object(), {});
    list_ = Value::Adopt(NewObject(TheRegistry().ClassNamed("NSColorListQVX")));
    EXPECT_TRUE(
        Invoke(Find("NSColorListQVX", "Create", false), list_.object(), {Value::Text("Table")}).boolean());
    Class& image = TheRegistry().ClassNamed("NSImageQVX");
    image_ = Value::Adopt(NewObject(image));
    Invoke(*image.Constructors().at(2), image_.object(),
           {Value::Integer(2), Value::Integer(2), Value::Color(0xFF0000)});
  }
  Things(const Things&) = delete;
  Things& operator=(const Things&) = delete;
  ~Things() {
    std::error_code error;
    std::filesystem::remove_all(folder_, error);
  }

  Value SelfFor(const Method& method) const {
    if (method.shared) return Value::Nil();
    const std::string& name = method.signature.name;
    // What fills an instance, and what only a pattern answers.
    if (name == "Constructor" || name.starts_with("initWith")) return Value::Adopt(NewObject(*method.owner));
    if (name == "patternImage")
      return Invoke(Find("NSColorQVX", "colorWithPatternImage", true), nullptr, {image_});
    return OfClass(method.owner->name);
  }

  Value OfClass(const std::string& cls) const {
    if (cls == "NSColorQVX") return color_;
    if (cls == "NSColorSpaceQVX") return space_;
    if (cls == "NSColorListQVX") return list_;
    if (cls == "MemoryBlock") return profile_;
    if (cls == "FolderItem") return Value::Adopt(NewFolderItem((folder_ / "profile.icc").native()));
    ADD_FAILURE() << "no sensible argument of class " << cls;
    return Value::Nil();
  }

  Value ArgumentFor(const Method& method, const Parameter& parameter) const {
    switch (parameter.type->kind) {
      case Kind::Double:
        return Value::Double(0.5);
      case Kind::Integer:
        return IntegerFor(method, parameter);
      case Kind::String:
        return TextFor(method, parameter);
      case Kind::Variant:
        return image_;
      case Kind::Array: {
        Value array = Value::Adopt(NewArray(*parameter.type->element, 3));
        return array;
      }
      case Kind::Object:
        return OfClass(parameter.type->cls->name);
      default:
        ADD_FAILURE() << "no sensible argument for " << method.declaration;
        return {};
    }
  }

 private:
  Value IntegerFor(const Method& method, const Parameter& parameter) const {
    if (parameter.name == "CGColorHandle")
      return Invoke(Find("NSColorQVX", "CGColorHandle", false), color_.object(), {});
    if (parameter.name == "CGColorSpaceHandle") {
      return Invoke(Find("NSColorSpaceQVX", "CGColorSpaceHandle", false), space_.object(), {});
    }
    if (parameter.name == "ColorSyncProfileHandle") {
      return Invoke(Find("NSColorSpaceQVX", "colorSyncProfileHandle", false), space_.object(), {});
    }
    return Value::Integer(method.signature.name == "availableColorSpacesWithModel" ? 1 : 0);
  }
  Value TextFor(const Method& method, const Parameter& parameter) const {
    if (parameter.name == "path") return Value::Text((folder_ / "Table.clr").native());
    if (parameter.name == "colorSpace") return Value::Text("NSCalibratedWhiteColorSpace");
    return Value::Text(method.owner->name == "NSColorSpaceQVX" ? "NSDeviceRGBColorSpace" : "Table");
  }

  std::filesystem::path folder_;
  Value color_;
  Value space_;
  Value profile_;
  Value list_;
  Value image_;
};

// What a call gave must be of the declared type. Only the placeholder gives Nil.
void ExpectResult(const Method& method, const Value& value) {
  const Type& type = *method.signature.result;
  switch (type.kind) {
    case Kind::Object:
      EXPECT_EQ(IsKindOf(value.object(), *type.cls), method.declaration != "_exception as NSExceptionQVX")
          << method.declaration;
      break;
    case Kind::Array:
      ASSERT_NE(value.object(), nullptr) << method.declaration;
      for (const Value& item : ArrayDataOf(value.object()).items) {
        EXPECT_EQ(item.kind(), type.element->kind == Kind::Double ? Kind::Double : Kind::Object)
            << method.declaration;
      }
      break;
    case Kind::Variant:
      EXPECT_TRUE(IsKindOf(value.object(), TheRegistry().ClassNamed("NSImageQVX"))) << method.declaration;
      break;
    case Kind::Nothing:
      break;
    default:
      EXPECT_EQ(value.kind(), type.kind) << method.declaration;
  }
}

// The call, and whether it came back without a host exception.
bool CallsCleanly(const Things& things, const Method& method) {
  const Value self = things.SelfFor(method);
  std::vector<Value> arguments;
  std::vector<Value> places(method.signature.parameters.size());
  for (std::size_t i = 0; i < places.size(); ++i) {
    const Parameter& parameter = method.signature.parameters[i];
    if (parameter.byref) {
      places[i] = Value::Double(0);
      arguments.push_back(Value::Reference(&places[i]));
    } else {
      arguments.push_back(things.ArgumentFor(method, parameter));
    }
  }
  try {
    ExpectResult(method, Invoke(method, self.object(), arguments));
    return true;
  } catch (const HostException& exception) {
    std::printf("  %s: %s\n", method.declaration.c_str(), DescribeException(exception.object()).c_str());
    return false;
  }
}

std::size_t CallAll(const std::deque<Method>& methods, const std::set<std::string>& refused) {
  const Things things;
  std::size_t called = 0;
  for (const Method& method : methods) {
    ++called;
    EXPECT_EQ(CallsCleanly(things, method), !refused.contains(method.declaration)) << method.declaration;
  }
  return called;
}

TEST(Table, EveryPropertyOfColors) {
  const Things things;
  const std::deque<Property>& properties = TheRegistry().ClassNamed("NSColorQVX").properties;
  for (const Property& property : properties) {
    const Value value = GetProperty(property, things.OfClass("NSColorQVX").object());
    EXPECT_EQ(value.kind(), property.type->kind) << property.name;
    EXPECT_EQ(property.setter.function, nullptr) << property.name;
  }
  EXPECT_EQ(properties.size(), unit::kColorProperties.size());
}

TEST(Table, EveryMethodOfColors) {
  // The colour is RGB: the readers of another kind refuse it.
  EXPECT_EQ(
      CallAll(TheRegistry().ClassNamed("NSColorQVX").methods,
              {"getCMYK(byref cyan as double, byref magenta as double, byref yellow as double, byref black "
               "as double)",
               "getCMYK(byref cyan as double, byref magenta as double, byref yellow as double, byref black "
               "as double, byref alpha as double)",
               "getWhite(byref white as double)", "getWhite(byref white as double, byref alpha as double)"}),
      unit::kColorMethods.size());
}

TEST(Table, EverySharedMethodOfColors) {
  EXPECT_EQ(CallAll(TheRegistry().ClassNamed("NSColorQVX").sharedMethods, {}),
            unit::ColorSharedMethods().size());
}

TEST(Table, EveryMethodOfLists) {
  EXPECT_EQ(CallAll(TheRegistry().ClassNamed("NSColorListQVX").methods, {}), unit::kListMethods.size());
}

TEST(Table, EveryMethodOfSpaces) {
  EXPECT_EQ(CallAll(TheRegistry().ClassNamed("NSColorSpaceQVX").methods, {}), unit::kSpaceMethods.size());
}

TEST(Table, EverySharedMethodOfSpaces) {
  EXPECT_EQ(CallAll(TheRegistry().ClassNamed("NSColorSpaceQVX").sharedMethods, {}),
            unit::SpaceSharedMethods().size());
}

TEST(Table, EveryConstantOfSpaces) {
  const std::deque<Constant>& constants = TheRegistry().ClassNamed("NSColorSpaceQVX").constants;
  ASSERT_EQ(constants.size(), unit::kSpaceConstants.size());
  for (std::size_t i = 0; i < constants.size(); ++i) {
    if (i < 8) {
      EXPECT_EQ(constants[i].value.integer(), static_cast<std::int32_t>(i) - 1) << constants[i].name;
    } else {
      EXPECT_EQ(Utf8Of(constants[i].value.string()), constants[i].name);
    }
  }
}

TEST(Table, NothingElseIsRegistered) {
  std::set<std::string> names;
  for (const auto& cls : TheRegistry().classes()) {
    if (cls->origin != Origin::Bundle) continue;
    names.insert(cls->name);
    EXPECT_EQ(cls->properties.empty(), cls->name != "NSColorQVX");
    EXPECT_EQ(cls->constants.empty(), cls->name != "NSColorSpaceQVX");
    EXPECT_EQ(cls->sharedMethods.empty(), cls->name == "NSColorListQVX");
  }
  EXPECT_EQ(names, (std::set<std::string>{"NSColorListQVX", "NSColorQVX", "NSColorSpaceQVX"}));
  EXPECT_TRUE(TheRegistry().problems().empty());
}

TEST(Table, TheLayoutIsTheOneThatTheHostAskedFor) {
  const double version = TheHostIdentity().version;
  const std::int32_t wanted = version >= 2013.04   ? 13
                              : version >= 2013.03 ? 12
                              : version >= 2013.0  ? 11
                              : version >= 2012.0  ? 10
                                                   : 9;
  EXPECT_EQ(AnnouncedLayout(), wanted);
  for (const char* const name : {"NSColorQVX", "NSColorListQVX", "NSColorSpaceQVX"}) {
    EXPECT_EQ(TheRegistry().ClassNamed(name).layoutVersion, wanted);
    EXPECT_EQ(TheRegistry().ClassNamed(name).dataSize, 16U);
  }
}

}  // namespace
}  // namespace hostrun

// NOLINTNEXTLINE(bugprone-exception-escape): what is thrown here ends the test, as it should
int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  hostrun::CommandLine line;
  line.Describe("Calls every declaration of the bundle.");
  hostrun::AddHostOptions(line, hostrun::options);
  if (const std::optional<int> status = line.Read(*argv, argc, argv)) return *status;
  const hostrun::Problem problem = hostrun::StartHost(hostrun::options);
  if (problem) {
    std::fprintf(stderr, "%s\n", problem->c_str());
    return 2;
  }
  int status = 0;
  {
    const hostrun::PoolScope pool;
    status = RUN_ALL_TESTS();
  }
  const std::string alive = hostrun::DescribeLive(hostrun::CountLive());
  if (!alive.empty()) std::fprintf(stderr, "still alive at the end:\n%s", alive.c_str());
  std::fflush(nullptr);
  _exit(alive.empty() ? status : 1);
}
