// hostrun/host/functions.h - the global functions of the host language.
#pragma once

#include <string>
#include <vector>

#include "hostrun/host/value.h"

namespace hostrun {

void RegisterTextFunctions();
void RegisterNumberFunctions();
// What "Arguments" gives programs.
void SetProgramArguments(std::vector<std::string> arguments);

// A number as text: whole numbers in full, others with as many significant digits as asked for.
std::string NumberText(double number, int digits);
// A value as Print and Str show it: at most 7 significant digits, colours as &cRRGGBB, objects by their
// class.
std::string DisplayText(const Value& value);
// A value as CStr shows it: as many digits as it takes to read the same number back.
std::string ExactText(const Value& value);
// A value as a program would write it: exact, text in quotes.
std::string LiteralText(const Value& value);

}  // namespace hostrun
