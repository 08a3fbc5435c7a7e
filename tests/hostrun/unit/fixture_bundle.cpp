// tests/hostrun/unit/fixture_bundle.cpp - a small bundle for tests of dispatch: one class with every kind of
// argument and result. It needs no platform, and registers in the layout that the host's version asks for.
#include <cstring>
#include <iterator>
#include <string>

#include "bundle/host/records.h"

namespace {

using qvx::REALarray;
using qvx::REALobject;
using qvx::REALproc;
using qvx::REALstring;

void* (*resolve)(const char*) = nullptr;

template <class F>
F Service(const char* name) {
  return reinterpret_cast<F>(resolve(name));
}

template <class T>
T& DataOf(REALobject self) {
  return *reinterpret_cast<T*>(reinterpret_cast<char*>(self) + 24);
}

std::int32_t live = 0;
void Construct(REALobject self) {
  ++live;
  DataOf<std::int32_t>(self) = 0;
}
void Destroy(REALobject) {
  --live;
}

REALstring NewString(const char* text) {
  return Service<REALstring (*)(const void*, std::int32_t, std::uint32_t)>("REALBuildStringWithEncoding")(
      text, static_cast<std::int32_t>(std::strlen(text)), qvx::kEncodingUTF8);
}

std::int32_t AddIntegers(REALobject, std::int32_t a, std::int32_t b) {
  return a + b;
}
std::int64_t WideSum(REALobject, std::int64_t a, std::int32_t b) {
  return a + b;
}
double Halve(REALobject, double x) {
  return x / 2;
}
float HalveSingle(REALobject, float x) {
  return x / 2;
}
// Only AL is defined: what a host reads beyond it is not the bundle's.
std::uint32_t NotBoolean(REALobject, std::uint8_t b) {
  return 0xABCDEF00U | (b == 0 ? 1U : 0U);
}
std::uint32_t Invert(REALobject, std::uint32_t color) {
  return color ^ 0xFFFFFFU;
}
REALstring EchoString(REALobject, REALstring s) {
  Service<void (*)(REALstring)>("REALLockString")(s);
  return s;
}
REALobject EchoObject(REALobject, REALobject o) {
  Service<void (*)(REALobject)>("REALLockObject")(o);
  return o;
}
void Swap(REALobject, double* a, double* b) {
  const double first = *a;
  *a = *b;
  *b = first;
}
double Mixed(std::int32_t i, double d, std::uint8_t b, REALobject o, std::uint32_t color) {
  return i + d + b + (o == nullptr ? 0 : 1000) + color;
}
double Total(REALarray numbers) {
  const auto count = Service<std::int32_t (*)(REALarray)>("RuntimeUBound")(numbers);
  using Read = void (*)(REALarray, std::int32_t, double*);
  const auto read = Service<Read (*)(REALarray)>("RuntimeArrayDirectGetGetProc")(numbers);
  double sum = 0;
  for (std::int32_t i = 0; i <= count; ++i) {
    double item = 0;
    read(numbers, i, &item);
    sum += item;
  }
  return sum;
}
REALarray Countdown(std::int32_t from) {
  const auto array =
      Service<REALarray (*)(std::int32_t, std::int32_t)>("RuntimeArrayCreateSingleDimBoundedArray")(2, -1);
  using Insert = void (*)(REALarray, std::int32_t, double);
  const auto insert = Service<Insert (*)(REALarray)>("RuntimeArrayDirectGetInsertProc")(array);
  for (std::int32_t i = 0; i < from; ++i) insert(array, i, from - i);
  return array;
}
REALobject Make() {
  return Service<REALobject (*)(const char*)>("PluginNewInstance")("Fixture");
}
void Fail(REALstring message) {
  const REALobject exception =
      Service<REALobject (*)(const char*)>("PluginNewInstance")("UnsupportedOperationException");
  Service<bool (*)(REALobject, const char*, REALstring)>("REALSetPropValueString")(exception, "Message",
                                                                                   message);
  Service<bool (*)(REALobject, const char*, std::int32_t)>("REALSetPropValueInt")(exception, "ErrorNumber",
                                                                                  7);
  Service<void (*)(REALobject)>("RuntimeRaiseException")(exception);
  Service<void (*)(REALobject)>("REALUnlockObject")(exception);
}
void Throw() {
  throw 42;
}
void GrowTooLong() {
  std::string text;
  text.reserve(text.max_size() + 1);
}
std::int32_t LengthByGlobalMethod(REALstring s) {
  const auto load = Service<void* (*)(const char*)>("REALLoadGlobalMethod");
  return reinterpret_cast<std::int32_t (*)(REALstring)>(load("LenB( s as string ) as integer"))(s);
}
std::int32_t Live() {
  return live;
}
void InitWith(REALobject self, std::int32_t number) {
  DataOf<std::int32_t>(self) = number;
}
void InitWithText(REALobject self, REALstring text) {
  DataOf<std::int32_t>(self) = -LengthByGlobalMethod(text);
}
std::int32_t Number(REALobject self, std::int32_t) {
  return DataOf<std::int32_t>(self);
}
void SetNumber(REALobject self, std::int32_t, std::int32_t number) {
  DataOf<std::int32_t>(self) = number;
}
std::int32_t ParameterWord(REALobject, std::int32_t parameter) {
  return parameter;
}
REALstring Title(REALobject, std::int32_t) {
  return NewString("a fixture");
}

template <class R, class... A>
qvx::REALmethodDefinition Method(const char* declaration, R (*function)(A...)) {
  return {reinterpret_cast<REALproc>(function), nullptr, declaration, qvx::kMethodFlags, {}};
}

qvx::REALmethodDefinition methods[] = {
    Method("Constructor(number as integer)", &InitWith),
    Method("Constructor(text as string)", &InitWithText),
    Method("AddIntegers(a as integer, b as integer = 10) as integer", &AddIntegers),
    Method("WideSum(a as int64, b as integer) as int64", &WideSum),
    Method("Halve(x as double) as double", &Halve),
    Method("HalveSingle(x as single) as single", &HalveSingle),
    Method("NotBoolean(b as boolean) as boolean", &NotBoolean),
    Method("Invert(c as Color) as Color", &Invert),
    Method("Echo(s as string) as string", &EchoString),
    Method("Echo(o as Fixture) as Fixture", &EchoObject),
    Method("EchoVariant(v as variant) as variant", &EchoObject),
    Method("Swap(byref a as double, byref b as double)", &Swap),
};
qvx::REALmethodDefinition sharedMethods[] = {
    Method("Mixed(i as integer, d as double, b as boolean, o as Fixture, c as Color) as double", &Mixed),
    Method("Total(paramarray numbers as double) as double", &Total),
    Method("Total(numbers() as double) as double", &Total),
    Method("Countdown(from as integer) as double()", &Countdown),
    Method("Make as Fixture", &Make),
    Method("Fail(message as string)", &Fail),
    Method("Throw", &Throw),
    Method("GrowTooLong", &GrowTooLong),
    Method("Length(s as string) as integer", &LengthByGlobalMethod),
    Method("Live as integer", &Live),
};
qvx::REALproperty properties[] = {
    {nullptr,
     "Number",
     "integer",
     0,
     reinterpret_cast<REALproc>(&Number),
     reinterpret_cast<REALproc>(&SetNumber),
     0,
     {},
     {}},
    {nullptr, "Word", "integer", 6, reinterpret_cast<REALproc>(&ParameterWord), nullptr, 77, {}, {}},
    {nullptr, "Title", "string", 6, reinterpret_cast<REALproc>(&Title), nullptr, 0, {}, {}},
};
qvx::REALconstant constants[] = {
    {"Answer=42", {}, {}},
    {"Greeting = \"hello\"", {}, {}},
};

qvx::REALclassDefinition definition = {13,
                                       "Fixture",
                                       nullptr,
                                       4,
                                       0,
                                       &Construct,
                                       &Destroy,
                                       properties,
                                       3,
                                       methods,
                                       12,
                                       nullptr,
                                       0,
                                       nullptr,
                                       0,
                                       nullptr,
                                       {},
                                       constants,
                                       2,
                                       qvx::kClassFlags,
                                       nullptr,
                                       0,
                                       sharedMethods,
                                       std::size(sharedMethods),
                                       {}};

}  // namespace

extern "C" __attribute__((visibility("default"))) void REALPluginMain(void* (*resolver)(const char*)) {
  resolve = resolver;
  Service<std::int32_t (*)(std::int32_t)>("RegisterPluginVersion")(13);
  Service<void (*)(qvx::REALclassDefinition*)>("PluginRegisterClass")(&definition);
}
