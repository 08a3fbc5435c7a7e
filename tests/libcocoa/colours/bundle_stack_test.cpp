// tests/libcocoa/colours/bundle_stack_test.cpp - the bundle's functions over the real platform, called on
// every stack that a host may come with: 4-byte aligned, not 16.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "hostrun/commands/describe.h"
#include "hostrun/host/arrays.h"
#include "hostrun/host/bundle.h"
#include "hostrun/host/call.h"
#include "hostrun/host/exceptions.h"
#include "hostrun/host/services.h"
#include "tests/bundle/scripted/stack_call.h"
#include "tests/whole/real/real_host.h"

namespace {

using hostrun::Class;
using hostrun::Kind;
using hostrun::Method;
using hostrun::Value;

constexpr std::size_t kMostWords = 24;
struct Words {
  std::uint32_t words[kMostWords];
};

// What the function that a record names is replaced by: calls it on the other stack, with the same words.
const void* target = nullptr;
std::uint32_t stackOffset = 0;

std::uint32_t CallTarget(Words words) {
  return scripted_call_at_offset(target, words.words, kMostWords, stackOffset);
}
double CallTargetForDouble(Words words) {
  return scripted_call_for_double_at_offset(target, words.words, kMostWords, stackOffset);
}

Method OnStack(const Method& method, std::uint32_t offset) {
  target = reinterpret_cast<const void*>(method.function);
  stackOffset = offset;
  Method other = method;
  const bool isDouble = method.signature.result != nullptr && method.signature.result->IsReal();
  other.function = isDouble ? reinterpret_cast<qvx::REALproc>(&CallTargetForDouble)
                            : reinterpret_cast<qvx::REALproc>(&CallTarget);
  return other;
}

// An instance that wraps something; empty for a class whose instances are made by a method of their own.
Value Filled(const std::string& className) {
  hostrun::ArgumentWords none;
  if (className == "NSColorQVX") return real::Call(real::MethodOf(className, "redColor"), none);
  if (className == "NSColorSpaceQVX") return real::Call(real::MethodOf(className, "sRGBColorSpace"), none);
  Value list = Value::Adopt(hostrun::NewObject(*hostrun::TheRegistry().FindClass(className)));
  if (className == "NSColorListQVX") {
    const Value name = Value::Text("a list");
    hostrun::Invoke(real::MethodOf(className, "Create(name as string) as boolean"), list.object(), {name});
  }
  return list;
}

Value ArgumentFor(const hostrun::Parameter& parameter) {
  const hostrun::Type& type = *parameter.type;
  if (type.kind == Kind::Object && type.cls->origin == hostrun::Origin::Bundle) return Filled(type.cls->name);
  if (type.kind == Kind::Array) {
    Value array = Value::Adopt(hostrun::NewArray(*type.element, -1));
    for (int i = 0; i < 4; ++i) hostrun::ArrayDataOf(array.object()).items.push_back(Value::Double(0.25 * i));
    return array;
  }
  if (type.kind == Kind::String) return Value::Text("a key");
  if (type.IsReal()) return Value::Double(0.5);
  return type.kind == Kind::Object || type.kind == Kind::Variant ? Value::Nil() : Value::DefaultOf(type);
}

// Everything that the call leaves: its result or exception, and what is behind its references.
std::string Outcome(const Method& method) {
  const Value self = method.shared ? Value::Nil() : Filled(method.owner->name);
  const std::vector<hostrun::Parameter>& parameters = method.signature.parameters;
  std::vector<Value> places(parameters.size());
  std::vector<Value> arguments;
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    places[i] = ArgumentFor(parameters[i]);
    arguments.push_back(parameters[i].byref ? Value::Reference(&places[i]) : places[i]);
  }
  const auto shown = [](const Value& value) {
    return value.kind() == Kind::Object ? "a " + value.object()->cls->name : hostrun::LiteralText(value);
  };
  std::string outcome;
  try {
    outcome = shown(hostrun::Invoke(method, self.object(), arguments));
  } catch (const hostrun::HostException& exception) {
    outcome = hostrun::DescribeException(exception.object());
  }
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    if (parameters[i].byref) outcome += ", " + shown(places[i]);
  }
  return outcome;
}

class BundleStack : public testing::Test {
 protected:
  // In a folder of its own: one of the functions writes a file.
  static void SetUpTestSuite() {
    real::StartHost();
    std::string folder = testing::TempDir() + "bundle_stackXXXXXX";
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    std::filesystem::current_path(folder);
  }
  static void TearDownTestSuite() {
    const std::filesystem::path folder = std::filesystem::current_path();
    std::filesystem::current_path("/");
    std::filesystem::remove_all(folder);
  }

  static std::vector<Class*> Classes() {
    std::vector<Class*> classes;
    for (const auto& each : hostrun::TheRegistry().classes()) {
      if (each->origin == hostrun::Origin::Bundle && each->defined) classes.push_back(each.get());
    }
    return classes;
  }
};

TEST_F(BundleStack, EveryFunctionDoesTheSameOnEveryStack) {
  int functions = 0;
  for (Class* const each : Classes()) {
    std::vector<const Method*> methods;
    for (const auto& property : each->properties) methods.push_back(&property.getter);
    for (const auto* table : {&each->methods, &each->sharedMethods}) {
      for (const Method& method : *table) methods.push_back(&method);
    }
    for (const Method* const method : methods) {
      ++functions;
      const std::string usual = Outcome(*method);
      for (const std::uint32_t offset : scripted::kStackOffsets) {
        EXPECT_EQ(Outcome(OnStack(*method, offset)), usual)
            << each->name << "." << method->declaration << " at " << offset;
      }
    }
  }
  EXPECT_EQ(Classes().size(), 3U);
  EXPECT_GT(functions, 0);
}

TEST_F(BundleStack, InstancesAreMadeAndDestroyedOnEveryStack) {
  for (Class* const each : Classes()) {
    for (const std::uint32_t offset : scripted::kStackOffsets) {
      const Value instance = Filled(each->name);
      const qvx::REALobject handle = hostrun::HandleOf(instance.object());
      const auto word = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(handle));
      const auto call = [&](void (*function)(qvx::REALobject)) {
        scripted_call_at_offset(reinterpret_cast<const void*>(function), &word, 1, offset);
      };
      call(each->definition->constructor);
      EXPECT_NE(hostrun::NativePointerOf(instance.object()), nullptr) << each->name << " at " << offset;
      call(each->definition->destructor);
      EXPECT_EQ(hostrun::NativePointerOf(instance.object()), nullptr) << each->name << " at " << offset;
    }
  }
}

int registered = 0;
void CountClass(qvx::REALclassDefinition* /*definition*/) {
  ++registered;
}
void* ResolveButCountClasses(const char* name) {
  if (std::string(name) == "PluginRegisterClass") return reinterpret_cast<void*>(&CountClass);
  return hostrun::ResolveService(name);
}

// A bundle can be entered once: each stack gets a copy of the file, loaded for itself.
TEST_F(BundleStack, TheEntryRegistersOnEveryStack) {
  for (const std::uint32_t offset : scripted::kStackOffsets) {
    const std::filesystem::path copy = std::filesystem::current_path() /
                                       ("QVXColor" + std::to_string(offset) + "." + std::to_string(getpid()));
    std::filesystem::copy_file(hostrun::BundleFile(real::BundlePath()), copy);
    const hostrun::Problem problem = hostrun::MapBundle(copy);
    std::filesystem::remove(copy);
    ASSERT_FALSE(problem) << *problem;
    const auto word = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(&ResolveButCountClasses));
    registered = 0;
    scripted_call_at_offset(reinterpret_cast<const void*>(hostrun::TheBundle().enter), &word, 1, offset);
    EXPECT_EQ(registered, 3) << offset;
  }
}

}  // namespace
