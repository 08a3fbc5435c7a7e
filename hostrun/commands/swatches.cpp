// hostrun/commands/swatches.cpp - "hostrun swatches": a picture of colours.
#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include "hostrun/commands/commands.h"
#include "hostrun/commands/start.h"
#include "hostrun/commands/swatches_picture.h"
#include "hostrun/commands/terminal.h"
#include "hostrun/host/exceptions.h"
#include "hostrun/host/functions.h"
#include "hostrun/host/platform_library.h"
#include "hostrun/host/registry.h"
#include "hostrun/host/text.h"
#include "hostrun/language/program.h"
#include "hostrun/language/statements/print.h"

namespace hostrun {
namespace {

struct SwatchesOptions {
  HostOptions host;
  std::string out = "swatches.png";
  std::string source;  // empty: the predefined colours
  int columns = 5;
};

bool IsColour(const Value& value) {
  return value.kind() == Kind::Color ||
         (value.object() != nullptr && IsKindOf(value.object(), ColourClass()));
}

// "sunrise:" names the colour "sunrise".
std::string PlainLabel(const std::string& label) {
  const auto first = label.find_first_not_of(" \t");
  const auto last = label.find_last_not_of(" \t:=");
  return first == std::string::npos || last == std::string::npos ? std::string()
                                                                 : label.substr(first, last - first + 1);
}

// The colours of one printed line, each named by the text just before it.
void AddPrinted(const std::vector<Value>& line, std::vector<ColourCard>& cards) {
  std::string label;
  for (const Value& item : line) {
    if (!IsColour(item)) {
      label = PlainLabel(DisplayText(item));
      continue;
    }
    if (label.empty()) label = "colour " + std::to_string(cards.size() + 1);
    cards.push_back(item.object() == nullptr ? CardOf(label, item.color()) : CardOf(label, item.object()));
    label.clear();
  }
}

int PrintedColours(const std::string& file, std::vector<ColourCard>& cards) {
  const Source source = Source::FromFile(file);
  SetPrintObserver([&cards](const std::vector<Value>& line) { AddPrinted(line, cards); });
  try {
    const int status = RunProgram(Compile(source), source);
    SetPrintObserver({});
    return status;
  } catch (const ProgramError& error) {
    throw std::runtime_error(source.Describe(error.at(), error.what()));
  }
}

int Draw(const SwatchesOptions& options) {
  const std::string extension = LowerName(std::filesystem::path(options.source).extension().native());
  SwatchPicture picture;
  picture.columns = options.columns;
  int status = kExitFine;
  if (options.source.empty()) {
    picture.cards = PredefinedColours();
    picture.title = "NSColorQVX: " + Counted(picture.cards.size(), "predefined colour");
  } else if (extension == ".clr") {
    picture.cards = ColoursOfListFile(options.source);
    picture.title = std::filesystem::path(options.source).stem().native() + ": " +
                    Counted(picture.cards.size(), "colour") + " of a list";
  } else if (extension == ".bas") {
    status = PrintedColours(options.source, picture.cards);
    if (picture.cards.empty()) {
      throw std::runtime_error(options.source +
                               ": wanted a program that prints colours, found none printed; print an "
                               "NSColorQVX or a Color, with a text before it as its name");
    }
    picture.title = std::filesystem::path(options.source).filename().native() + ": " +
                    Counted(picture.cards.size(), "printed colour");
  } else {
    throw std::runtime_error(options.source +
                             ": wanted a colour list (.clr) or a program (.bas), found neither");
  }
  picture.subtitle =
      "Value as colorValue gives it; space and components as the colour holds them; after an arrow, what a "
      "colour known by "
      "name is resolved to";
  WriteSwatchPicture(picture, options.out);
  std::fprintf(stderr, "hostrun: %s drawn in %s\n", Counted(picture.cards.size(), "colour").c_str(),
               options.out.c_str());
  return status;
}

int Swatches(const SwatchesOptions& options) {
  try {
    const Problem problem = StartHost(options.host);
    if (problem) return Refuse(*problem);
    const PoolScope pool;  // for what is autoreleased outside of calls into the bundle
    return Draw(options);
  } catch (const HostException& exception) {
    WritePlatformLogOf(exception.object());
    return Refuse("hostrun swatches: " + DescribeException(exception.object()));
  } catch (const std::exception& error) {
    return Refuse(error.what());
  }
}

}  // namespace

Action SwatchesCommand(CommandLine& line) {
  const auto options = std::make_shared<SwatchesOptions>();
  AddHostOptions(line, options->host);
  line.Add("--out,--output", options->out, "The picture to write, as .png or .svg")
      .Takes("FILE (swatches.png)");
  line.Add("--columns", options->columns, "Colours in a row").Takes("N (5)").Between(1, 50);
  line.Add("source", options->source,
           "A colour list, or a program whose printed colours are drawn; without it, the predefined colours")
      .Takes("[LIST.clr | PROGRAM.bas]");
  line.SetFooter(
      "Example:\n  hostrun swatches --out sunset.svg examples/palette.bas\n\n"
      "Exit status: 0 drawn, 1 drawn but the program ended with an uncaught exception, 2 an error of use.");
  return [options] { return Swatches(*options); };
}

}  // namespace hostrun
