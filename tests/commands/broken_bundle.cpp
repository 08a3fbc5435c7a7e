// tests/commands/broken_bundle.cpp - a bundle that breaks the contract in one place, for the tests of
// "hostrun check". FAULT, given by the build, says in which; with kNone it keeps the contract. What concerns
// symbols is given by macros of its own.
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <cstring>

#include "host/records.h"

namespace {

enum class Fault : std::uint8_t {
  kNone,
  kCrashOnEntry,
  kHangOnEntry,
  kEndsOnEntry,
  kWrongVersion,
  kTwoVersions,
  kLateVersion,
  kNoClass,
  kSameClassTwice,
  kUnknownSuperclass,
  kWrongLayoutWord,
  kDataSize,
  kReservedWord,
  kNoFunction,
  kFunctionIsData,
  kDeclarationIsNoText,
  kCountTooLarge,
  kBadDeclaration,
  kUnknownType,
  kBadConstant,
  kFullInstance,
  kCrash,
  kHang,
  kNotNeutral,
  kNotNeutralByReference,
  kRaises,
  kKeepsArgument,
  kLeaksString,
  kLeaksObject,
  kWrongClass,
  kNullHandle,
};
constexpr Fault kFault = Fault::FAULT;

using qvx::REALobject;
using qvx::REALproc;
using qvx::REALstring;

void* (*resolve)(const char*) = nullptr;

template <class F>
F Service(const char* name) {
  return reinterpret_cast<F>(resolve(name));
}

REALobject New(const char* name) {
  return Service<REALobject (*)(const char*)>("PluginNewInstance")(name);
}

void Construct(REALobject self) {
  if (kFault == Fault::kFullInstance) std::memset(reinterpret_cast<char*>(self) + 24, 1, sizeof(void*));
}
void Destroy(REALobject) {}

std::int32_t Number(REALobject self, std::int32_t) {
  if (kFault == Fault::kNullHandle && self == nullptr) return 3;
  return kFault == Fault::kNotNeutral ? 7 : 0;
}

void Read(REALobject, double* out) {
  *out = kFault == Fault::kNotNeutralByReference ? 0.5 : 0;
}

void Use(REALobject, REALobject other) {
  if (kFault == Fault::kKeepsArgument && other != nullptr)
    Service<void (*)(REALobject)>("REALLockObject")(other);
  if (kFault == Fault::kCrash) std::abort();
  while (kFault == Fault::kHang) sleep(1);
  if (kFault == Fault::kRaises) {
    const REALobject exception = New("UnsupportedOperationException");
    Service<void (*)(REALobject)>("RuntimeRaiseException")(exception);
    Service<void (*)(REALobject)>("REALUnlockObject")(exception);
  }
}

REALobject Make() {
  if (kFault == Fault::kLeaksObject) New("Sound");
  if (kFault == Fault::kLeaksString) {
    Service<REALstring (*)(const void*, std::int32_t, std::uint32_t)>("REALBuildString")("lost", 4, 0);
  }
  return New(kFault == Fault::kWrongClass ? "RuntimeException" : "Sound");
}

template <class R, class... A>
REALproc Proc(R (*function)(A...)) {
  return reinterpret_cast<REALproc>(function);
}

constexpr const char* kUseDeclaration = kFault == Fault::kBadDeclaration ? "Use(other Sound)"
                                        : kFault == Fault::kUnknownType  ? "Use(other as Nowhere)"
                                                                         : "Use(other as Sound)";
std::int32_t data[4] = {1, 2, 3, 4};

std::array<qvx::REALproperty, 1> properties = {
    {{nullptr, "Number", "integer", qvx::kPropertyFlags, Proc(&Number), nullptr, 0, {}, {}}}};
std::array<qvx::REALmethodDefinition, 2> methods = {{
    {Proc(&Read), nullptr, "Read(byref out as double)", qvx::kMethodFlags, {}},
    {Proc(&Use), nullptr, kUseDeclaration, qvx::kMethodFlags, {}},
}};
std::array<qvx::REALmethodDefinition, 1> sharedMethods = {
    {{Proc(&Make), nullptr, "Make as Sound", qvx::kMethodFlags, {}}}};
std::array<qvx::REALconstant, 1> constants = {
    {{kFault == Fault::kBadConstant ? "Answer:42" : "Answer=42", {}, {}}}};

// The records of the old layout, of which the host reads no more.
template <class Old, class Record, std::size_t N>
Record* Shrunk(const std::array<Record, N>& records) {
  auto* const shrunk = static_cast<Old*>(std::calloc(N, sizeof(Old)));
  for (std::size_t i = 0; i < N; ++i) std::memcpy(&shrunk[i], &records[i], sizeof(Old));
  return reinterpret_cast<Record*>(shrunk);
}
using OldMethod = std::array<char, qvx::kOldMethodSize>;
using OldProperty = std::array<char, qvx::kOldPropertySize>;
using OldConstant = std::array<char, qvx::kOldConstantSize>;

qvx::REALclassDefinition definition;

void Describe(std::int32_t version) {
  const bool old = version <= 9;
  if (kFault == Fault::kReservedWord) properties[0].reserved[1] = 5;
  if (kFault == Fault::kNoFunction) methods[0].function = nullptr;
  if (kFault == Fault::kFunctionIsData) properties[0].getter = reinterpret_cast<REALproc>(&data);
  if (kFault == Fault::kDeclarationIsNoText) methods[1].declaration = reinterpret_cast<const char*>(16);
  definition.version = kFault == Fault::kWrongLayoutWord ? version + 1 : version;
  definition.name = "Sound";
  definition.superName = kFault == Fault::kUnknownSuperclass ? "Missing" : nullptr;
  definition.dataSize = kFault == Fault::kDataSize ? 4 : 16;
  definition.constructor = &Construct;
  definition.destructor = &Destroy;
  definition.properties = old ? Shrunk<OldProperty>(properties) : properties.data();
  definition.propertyCount = 1;
  definition.methods = old ? Shrunk<OldMethod>(methods) : methods.data();
  definition.methodCount = 2;
  definition.sharedMethods = old ? Shrunk<OldMethod>(sharedMethods) : sharedMethods.data();
  definition.sharedMethodCount = 1;
  definition.constants = old ? Shrunk<OldConstant>(constants) : constants.data();
  definition.constantCount = kFault == Fault::kCountTooLarge ? 1000000 : 1;
  definition.flags = qvx::kClassFlags;
}

void Announce(std::int32_t version) {
  Service<std::int32_t (*)(std::int32_t)>("RegisterPluginVersion")(version);
}
void Register() {
  Service<void (*)(qvx::REALclassDefinition*)>("PluginRegisterClass")(&definition);
}

void Enter(void* (*resolver)(const char*)) {
  resolve = resolver;
  if (kFault == Fault::kCrashOnEntry) std::abort();
  if (kFault == Fault::kEndsOnEntry) std::_Exit(0);
  while (kFault == Fault::kHangOnEntry) sleep(1);
  const double host = static_cast<double>(Service<long double (*)()>("REALGetRBVersion")());
  const std::int32_t version = host >= 2013.04   ? 13
                               : host >= 2013.03 ? 12
                               : host >= 2013.0  ? 11
                               : host >= 2012.0  ? 10
                                                 : 9;
  Describe(version);
  if (kFault != Fault::kLateVersion) Announce(kFault == Fault::kWrongVersion ? version - 1 : version);
  if (kFault == Fault::kTwoVersions) Announce(version);
  if (kFault != Fault::kNoClass) Register();
  if (kFault == Fault::kSameClassTwice) Register();
  if (kFault == Fault::kLateVersion) Announce(version);
}

}  // namespace

#define EXPORTED extern "C" __attribute__((visibility("default")))

#ifdef UNKNOWN_SYMBOL
extern "C" void NoSuchFunctionAnywhere();
#endif

#ifdef NO_ENTRY_POINT
EXPORTED void SomethingElse(void* (*resolver)(const char*)) {
#else
EXPORTED void REALPluginMain(void* (*resolver)(const char*)) {
#endif
#ifdef UNKNOWN_SYMBOL
  NoSuchFunctionAnywhere();
#endif
  Enter(resolver);
}

#ifdef EXTRA_EXPORT
EXPORTED void AnotherOne() {}
#endif
