// hostrun/commands/trace_report.cpp - the forms in which "hostrun trace" tells of a run.
#include "hostrun/commands/trace_report.h"

#include <algorithm>
#include <cstdio>
#include <map>

#include "hostrun/commands/json.h"
#include "hostrun/commands/terminal.h"

namespace hostrun {
namespace {

using std::chrono::nanoseconds;

std::string Microseconds(nanoseconds time) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f µs", static_cast<double>(time.count()) / 1000);
  return text;
}

class Text final : public TraceReport {
 public:
  Text(TakeLine take, bool colour) : take_(std::move(take)), paint_(colour) {}

  void Enter(const EnteredCall& call) override {
    if (!call.sourceLine.empty()) take_(paint_(Style::Notable, call.sourceLine));
    Line("> ", paint_(Style::Strong, call.heading));
    std::string arguments;
    for (const auto& [name, value] : call.arguments) {
      arguments += (arguments.empty() ? "" : ", ") + name + " = " + value;
    }
    if (!arguments.empty()) Line("    with ", arguments);
    ++depth_;
  }

  void Act(ActionKind kind, const std::string& text) override {
    switch (kind) {
      case ActionKind::Message:
        return Line("sends ", text);
      case ActionKind::Service:
        return Line("uses ", text);
      case ActionKind::Function:
        return Line("calls ", text);
    }
  }

  void Leave(const LeftCall& call) override {
    --depth_;
    std::string text = call.outcome.empty() ? "returns" : "gives " + call.outcome;
    if (call.raised) text = paint_(Style::Bad, "raises " + call.outcome);
    for (const auto& [name, value] : call.outputs) text.append(", ").append(name).append(" = ").append(value);
    Line("< ", text + paint_(Style::Faint, ", " + Microseconds(call.time)));
  }

 private:
  void Line(std::string_view sign, const std::string& text) {
    take_(std::string(2 + 4 * depth_, ' ').append(sign) + text);
  }

  TakeLine take_;
  Painter paint_;
  std::size_t depth_ = 0;
};

ordered_json ObjectOf(const NamedTexts& texts) {
  ordered_json object = ordered_json::object();
  for (const auto& [name, value] : texts) object[name] = value;
  return object;
}

std::string OneLine(const ordered_json& json) {
  return JsonText(json, -1);
}

class Json final : public TraceReport {
 public:
  explicit Json(TakeLine take) : take_(std::move(take)) {}

  void Enter(const EnteredCall& call) override {
    ordered_json json = {
        {"event", "call"}, {"depth", depth_++}, {"line", call.line}, {"member", call.member}};
    json["declaration"] = call.declaration.empty() ? ordered_json() : ordered_json(call.declaration);
    json["arguments"] = ObjectOf(call.arguments);
    take_(OneLine(json));
  }

  void Act(ActionKind kind, const std::string& text) override {
    static constexpr const char* kNames[] = {"message", "service", "function"};
    take_(OneLine({{"event", kNames[static_cast<std::size_t>(kind)]}, {"depth", depth_}, {"text", text}}));
  }

  void Leave(const LeftCall& call) override {
    ordered_json json = {
        {"event", call.raised ? "raise" : "return"}, {"depth", --depth_}, {"member", call.member}};
    json[call.raised ? "exception" : "result"] =
        call.outcome.empty() ? ordered_json() : ordered_json(call.outcome);
    json["outputs"] = ObjectOf(call.outputs);
    json["nanoseconds"] = call.time.count();
    take_(OneLine(json));
  }

 private:
  TakeLine take_;
  std::size_t depth_ = 0;
};

class Summary final : public TraceReport {
 public:
  Summary(TakeLine take, bool json) : take_(std::move(take)), json_(json) {}

  void Enter(const EnteredCall& call) override { open_.push_back(&RowOf(call.member, call.declaration)); }

  void Act(ActionKind kind, const std::string&) override {
    if (kind == ActionKind::Message) ++open_.back()->messages;
    if (kind == ActionKind::Service) ++open_.back()->services;
  }

  void Leave(const LeftCall& call) override {
    Row& row = *open_.back();
    open_.pop_back();
    ++row.calls;
    row.time += call.time;
  }

  void Finish() override {
    std::vector<std::pair<Key, Row>> rows(rows_.begin(), rows_.end());
    std::stable_sort(rows.begin(), rows.end(),
                     [](const auto& a, const auto& b) { return a.second.time > b.second.time; });
    if (!json_) take_("   calls     time ms  µs a call    messages    services  member");
    for (const auto& [key, row] : rows) json_ ? TakeJson(key, row) : TakeText(key, row);
  }

 private:
  // Overloads are told apart.
  using Key = std::pair<std::string, std::string>;  // member, declaration
  struct Row {
    std::uint64_t calls = 0;
    nanoseconds time{};
    std::uint64_t messages = 0;
    std::uint64_t services = 0;
  };

  Row& RowOf(const std::string& member, const std::string& declaration) {
    return rows_[{member, declaration}];
  }

  void TakeText(const Key& key, const Row& row) const {
    const double time = static_cast<double>(row.time.count());
    char numbers[128];
    std::snprintf(numbers, sizeof numbers, "%8llu  %10.3f  %9.1f  %10llu  %10llu  ",
                  static_cast<unsigned long long>(row.calls), time / 1e6,
                  row.calls == 0 ? 0 : time / 1e3 / static_cast<double>(row.calls),
                  static_cast<unsigned long long>(row.messages),
                  static_cast<unsigned long long>(row.services));
    const auto& [member, declaration] = key;
    const std::string cls = member.substr(0, member.find('.') + 1);
    take_(numbers + (declaration.empty() ? member : cls + declaration));
  }

  void TakeJson(const Key& key, const Row& row) const {
    const auto& [member, declaration] = key;
    take_(OneLine({{"member", member},
                   {"declaration", declaration.empty() ? ordered_json() : ordered_json(declaration)},
                   {"calls", row.calls},
                   {"nanoseconds", row.time.count()},
                   {"messages", row.messages},
                   {"services", row.services}}));
  }

  TakeLine take_;
  bool json_;
  std::map<Key, Row> rows_;
  std::vector<Row*> open_;  // innermost last
};

}  // namespace

std::unique_ptr<TraceReport> TextReport(TakeLine take, bool colour) {
  return std::make_unique<Text>(std::move(take), colour);
}

std::unique_ptr<TraceReport> JsonReport(TakeLine take) {
  return std::make_unique<Json>(std::move(take));
}

std::unique_ptr<TraceReport> SummaryReport(TakeLine take, bool json) {
  return std::make_unique<Summary>(std::move(take), json);
}

}  // namespace hostrun
