// hostrun/host/functions_numbers.cpp - the global functions of the host language that work on numbers and
// colours.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <random>

#include "hostrun/host/arrays.h"
#include "hostrun/host/functions.h"
#include "hostrun/host/records.h"
#include "hostrun/host/registry.h"

namespace hostrun {
namespace {

std::vector<std::string>& ProgramArguments() {
  static std::vector<std::string> arguments;
  return arguments;
}

std::int64_t AbsInteger(std::int64_t n) {
  return n < 0 ? static_cast<std::int64_t>(0 - static_cast<std::uint64_t>(n)) : n;
}

template <class Better>
double Best(double first, Object* more, Better better) {
  if (more == nullptr) return first;
  for (const Value& item : ArrayDataOf(more).items) {
    if (better(item.real(), first)) first = item.real();
  }
  return first;
}
double Min(double first, Object* more) {
  return Best(first, more, std::less<>());
}
double Max(double first, Object* more) {
  return Best(first, more, std::greater<>());
}
std::int64_t MinInteger(std::int64_t a, std::int64_t b) {
  return std::min(a, b);
}
std::int64_t MaxInteger(std::int64_t a, std::int64_t b) {
  return std::max(a, b);
}

std::int32_t Sign(double x) {
  return x > 0 ? 1 : x < 0 ? -1 : 0;
}
std::int32_t CLong(double x) {
  return static_cast<std::int32_t>(Value::Truncate(x));
}
std::int64_t CInt64(double x) {
  return Value::Truncate(x);
}

double Rnd() {
  static std::mt19937_64 engine{std::random_device{}()};
  return std::uniform_real_distribution<double>(0, 1)(engine);
}

// Since some moment in the past; the clock never goes back.
template <class Unit>
double Elapsed() {
  const auto since = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration<double, Unit>(since).count();
}
std::int32_t Ticks() {
  return static_cast<std::int32_t>(static_cast<std::int64_t>(Elapsed<std::ratio<1, 60>>()));
}

std::uint32_t Channel(double value) {
  return static_cast<std::uint32_t>(std::clamp(value, 0.0, 255.0));
}

std::uint32_t Rgb(std::int32_t red, std::int32_t green, std::int32_t blue) {
  return (Channel(red) << 16U) | (Channel(green) << 8U) | Channel(blue);
}

std::uint32_t FromFractions(double red, double green, double blue) {
  const auto channel = [](double x) {
    return static_cast<std::int32_t>(std::lround(std::clamp(x, 0.0, 1.0) * 255));
  };
  return Rgb(channel(red), channel(green), channel(blue));
}

std::uint32_t Hsv(double hue, double saturation, double value) {
  const double sector = (hue - std::floor(hue)) * 6;
  const auto channel = [=](double shift) {
    const double k = std::fmod(shift + sector, 6);
    return value - value * saturation * std::clamp(std::min(k, 4 - k), 0.0, 1.0);
  };
  return FromFractions(channel(5), channel(3), channel(1));
}

std::uint32_t Cmy(double cyan, double magenta, double yellow) {
  return FromFractions(1 - cyan, 1 - magenta, 1 - yellow);
}

Object* Arguments() {
  ObjectRef array = ObjectRef::Adopt(NewArray(*TypeOf(Kind::String), -1));
  for (const std::string& argument : ProgramArguments()) {
    ArrayDataOf(array.get()).items.push_back(Value::Text(argument));
  }
  return array.Detach();
}

}  // namespace

void SetProgramArguments(std::vector<std::string> arguments) {
  ProgramArguments() = std::move(arguments);
}

void RegisterNumberFunctions() {
  const auto add = [](const char* declaration, auto function) {
    TheRegistry().AddFunction(declaration, Proc(+function));
  };
  add("Abs(n as int64) as int64", &AbsInteger);
  add("Abs(x as double) as double", [](double x) { return std::fabs(x); });
  add("Min(a as int64, b as int64) as int64", &MinInteger);
  add("Min(first as double, paramarray more as double) as double", &Min);
  add("Max(a as int64, b as int64) as int64", &MaxInteger);
  add("Max(first as double, paramarray more as double) as double", &Max);
  // Halves away from zero.
  add("Round(x as double) as double", [](double x) { return std::round(x); });
  add("Floor(x as double) as double", [](double x) { return std::floor(x); });
  add("Ceil(x as double) as double", [](double x) { return std::ceil(x); });
  add("Truncate(x as double) as double", [](double x) { return std::trunc(x); });
  add("Sqrt(x as double) as double", [](double x) { return std::sqrt(x); });
  add("Pow(x as double, y as double) as double", [](double x, double y) { return std::pow(x, y); });
  add("Exp(x as double) as double", [](double x) { return std::exp(x); });
  add("Log(x as double) as double", [](double x) { return std::log(x); });
  add("Sin(x as double) as double", [](double x) { return std::sin(x); });
  add("Cos(x as double) as double", [](double x) { return std::cos(x); });
  add("Tan(x as double) as double", [](double x) { return std::tan(x); });
  add("ATan(x as double) as double", [](double x) { return std::atan(x); });
  add("ATan2(y as double, x as double) as double", [](double y, double x) { return std::atan2(y, x); });
  add("Sign(x as double) as integer", &Sign);
  add("CLong(x as double) as integer", &CLong);
  add("CInt64(x as double) as int64", &CInt64);
  add("Rnd as double", &Rnd);
  add("Microseconds as double", &Elapsed<std::micro>);
  add("Milliseconds as double", &Elapsed<std::milli>);
  add("Ticks as integer", &Ticks);
  add("RGB(red as integer, green as integer, blue as integer) as color", &Rgb);
  add("HSV(hue as double, saturation as double, value as double) as color", &Hsv);
  add("CMY(cyan as double, magenta as double, yellow as double) as color", &Cmy);
  add("Arguments as string()", &Arguments);
}

}  // namespace hostrun
