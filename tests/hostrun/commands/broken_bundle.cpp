// tests/hostrun/commands/broken_bundle.cpp - a bundle that breaks the contract in one place, for the tests of
// "hostrun check". The environment's BROKEN_BUNDLE_FAULT says in which; without one it keeps the contract.
// What concerns the file is given by macros and options of the build.
#include <dlfcn.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "bundle/host/records.h"

namespace {

// Whether this is the fault to show.
bool Has(std::string_view fault) {
  static const char* const wanted = std::getenv("BROKEN_BUNDLE_FAULT");
  return wanted != nullptr && fault == wanted;
}

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

// By the platform, which the file does not need otherwise.
void Log(const char* text) {
  const auto makeText = reinterpret_cast<void* (*)(const void*, const char*, std::uint32_t)>(
      dlsym(RTLD_DEFAULT, "CFStringCreateWithCString"));
  const auto log = reinterpret_cast<void (*)(void*, ...)>(dlsym(RTLD_DEFAULT, "NSLog"));
  constexpr std::uint32_t kUtf8 = 0x08000100;
  log(makeText(nullptr, text, kUtf8));
}

void Construct(REALobject self) {
  if (Has("FullInstance")) std::memset(reinterpret_cast<char*>(self) + 24, 1, sizeof(void*));
}
void Destroy(REALobject) {}

std::int32_t Number(REALobject self, std::int32_t) {
  if (Has("NullHandle") && self == nullptr) return 3;
  return Has("NotNeutral") ? 7 : 0;
}

void Read(REALobject, double* out) {
  *out = Has("NotNeutralByReference") ? 0.5 : 0;
}

void Use(REALobject, REALobject other) {
  if (Has("KeepsArgument") && other != nullptr) Service<void (*)(REALobject)>("REALLockObject")(other);
  if (Has("Logs") || Has("LogsAndCrashes")) Log("last words");
  if (Has("Crash") || Has("LogsAndCrashes")) std::abort();
  while (Has("Hang")) sleep(1);
  if (Has("Raises")) {
    const REALobject exception = New("UnsupportedOperationException");
    Service<void (*)(REALobject)>("RuntimeRaiseException")(exception);
    Service<void (*)(REALobject)>("REALUnlockObject")(exception);
  }
}

REALobject Make() {
  static REALobject kept = nullptr;
  if (Has("FillsKeptInstance")) {
    if (kept == nullptr) {
      kept = New("Sound");
    } else {
      std::memset(reinterpret_cast<char*>(kept) + 24, 1, sizeof(void*));
    }
  }
  if (Has("LeaksObject")) New("Sound");
  if (Has("LeaksString")) {
    Service<REALstring (*)(const void*, std::int32_t, std::uint32_t)>("REALBuildString")("lost", 4, 0);
  }
  return New(Has("WrongClass") ? "RuntimeException" : "Sound");
}

template <class R, class... A>
REALproc Proc(R (*function)(A...)) {
  return reinterpret_cast<REALproc>(function);
}

// The end of what may be read: letters before it, and behind it nothing at all.
char* EndOfMemory() {
  constexpr std::size_t kPage = 4096;
  auto* const pages = static_cast<char*>(
      mmap(nullptr, 2 * kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  std::memset(pages, 'a', kPage);
  mprotect(pages + kPage, kPage, PROT_NONE);
  return pages + kPage;
}

const char* UseDeclaration() {
  if (Has("TextWithoutEnd")) return EndOfMemory() - 8;
  if (Has("DeclarationIsNoText")) return reinterpret_cast<const char*>(16);
  if (Has("BadDeclaration")) return "Use(other Sound)";
  return Has("UnknownType") ? "Use(other as Nowhere)" : "Use(other as Sound)";
}
std::int32_t data[4] = {1, 2, 3, 4};

std::array<qvx::REALproperty, 1> properties = {
    {{nullptr, "Number", "integer", qvx::kPropertyFlags, Proc(&Number), nullptr, 0, {}, {}}}};
std::array<qvx::REALmethodDefinition, 2> methods = {{
    {Proc(&Read), nullptr, "Read(byref out as double)", qvx::kMethodFlags, {}},
    {Proc(&Use), nullptr, nullptr, qvx::kMethodFlags, {}},
}};
std::array<qvx::REALmethodDefinition, 1> sharedMethods = {
    {{Proc(&Make), nullptr, "Make as Sound", qvx::kMethodFlags, {}}}};
std::array<qvx::REALconstant, 1> constants = {{{"Answer=42", {}, {}}}};

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
  if (Has("ReservedWord")) properties[0].reserved[1] = 5;
  if (Has("NoFunction")) methods[0].function = nullptr;
  if (Has("FunctionIsData")) properties[0].getter = reinterpret_cast<REALproc>(&data);
  methods[1].declaration = UseDeclaration();
  if (Has("BadConstant")) constants[0].declaration = "Answer:42";
  definition.version = Has("WrongLayoutWord") ? version + 1 : version;
  definition.name = Has("NameIsNoText") ? "Sou\xFFnd" : "Sound";
  definition.superName = Has("UnknownSuperclass") ? "Missing" : nullptr;
  definition.dataSize = Has("DataSize") ? 4 : 16;
  definition.constructor = &Construct;
  definition.destructor = &Destroy;
  definition.properties = old ? Shrunk<OldProperty>(properties) : properties.data();
  definition.propertyCount = 1;
  definition.methods = old ? Shrunk<OldMethod>(methods) : methods.data();
  definition.methodCount = 2;
  definition.sharedMethods = old ? Shrunk<OldMethod>(sharedMethods) : sharedMethods.data();
  definition.sharedMethodCount = 1;
  definition.constants = old ? Shrunk<OldConstant>(constants) : constants.data();
  definition.constantCount = Has("CountTooLarge") ? 1000000 : 1;
  if (Has("RecordsBehindMemory")) {
    definition.constants = reinterpret_cast<qvx::REALconstant*>(EndOfMemory());
    definition.constantCount = 0;
  }
  definition.flags = qvx::kClassFlags;
}

void Announce(std::int32_t version) {
  Service<std::int32_t (*)(std::int32_t)>("RegisterPluginVersion")(version);
}
void Register() {
  auto* const where =
      Has("DefinitionNowhere") ? reinterpret_cast<qvx::REALclassDefinition*>(16) : &definition;
  Service<void (*)(qvx::REALclassDefinition*)>("PluginRegisterClass")(where);
}

void Enter(void* (*resolver)(const char*)) {
  resolve = resolver;
  if (Has("CrashOnEntry")) std::abort();
  if (Has("EndsOnEntry")) std::_Exit(0);
  while (Has("HangOnEntry")) sleep(1);
  // The host is well until it makes the copy of itself that the first check runs in.
  if (Has("CrashLater")) pthread_atfork(&std::abort, nullptr, nullptr);
  const auto host = static_cast<double>(Service<long double (*)()>("REALGetRBVersion")());
  const std::int32_t version = host >= 2013.04   ? 13
                               : host >= 2013.03 ? 12
                               : host >= 2013.0  ? 11
                               : host >= 2012.0  ? 10
                                                 : 9;
  Describe(version);
  if (!Has("LateVersion")) Announce(Has("WrongVersion") ? version - 1 : version);
  if (Has("TwoVersions")) Announce(version);
  if (!Has("NoClass")) Register();
  if (Has("SameClassTwice")) Register();
  if (Has("LateVersion")) Announce(version);
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
