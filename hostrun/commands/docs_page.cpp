// hostrun/commands/docs_page.cpp - the reference as one HTML page, complete in itself.
#include "hostrun/commands/docs_page.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <map>

#include "hostrun/commands/docs_members.h"
#include "hostrun/commands/docs_style.h"
#include "hostrun/commands/xml.h"
#include "hostrun/host/registry.h"
#include "hostrun/host/text.h"

namespace hostrun {
namespace {

// `...` is code.
std::string Prose(std::string_view text) {
  std::string html;
  bool code = false;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t tick = std::min(text.find('`', at), text.size());
    html += XmlEscaped(text.substr(at, tick - at));
    if (tick < text.size()) html += code ? "</code>" : "<code>";
    code = !code;
    at = tick + 1;
  }
  return html;
}

std::string Paragraphs(const Said& said) {
  std::string html;
  for (const std::string& paragraph : said.paragraphs) html += "<p>" + Prose(paragraph) + "</p>\n";
  return html;
}

std::string Fields(const Said& said, const std::string& defaults = {}) {
  std::string rows;
  const auto row = [&rows](const char* label, const std::string& html) {
    rows += std::string("<div><dt>") + label + "</dt><dd>" + html + "</dd></div>\n";
  };
  if (!defaults.empty()) row("Defaults", XmlEscaped(defaults));
  if (said.nil) row("Nil gives", Prose(*said.nil));
  if (said.raises) row("Raises", Prose(*said.raises));
  std::string html = rows.empty() ? rows : "<dl>\n" + rows + "</dl>\n";
  if (said.note) html += "<p class=\"note\"><b>Mind:</b> " + Prose(*said.note) + "</p>\n";
  return html;
}

std::string Program(const char* title, const std::string& program) {
  if (program.empty()) return {};
  return std::string("<figure><figcaption>") + title + "</figcaption>\n<pre><code>" + XmlEscaped(program) +
         "</code></pre></figure>\n";
}

// The keywords of a declaration are shown faintly, so that its names stand out; a class leads to its text.
std::string Signature(const std::string& declaration, const std::vector<ClassText>& texts) {
  static constexpr std::array<std::string_view, 3> kWords = {"as", "byref", "paramarray"};
  std::string html;
  for (std::size_t at = 0; at < declaration.size();) {
    std::size_t end = at;
    while (end < declaration.size() && std::isalnum(static_cast<unsigned char>(declaration[end])) != 0) ++end;
    if (end == at) {
      html += XmlEscaped(declaration.substr(at++, 1));
      continue;
    }
    const std::string word = declaration.substr(at, end - at);
    const auto cls = std::find_if(texts.begin(), texts.end(), [&word](const ClassText& text) {
      return SameName(text.name, word) && ClassOf(text) != nullptr;
    });
    if (cls != texts.end()) {
      html += "<a href=\"#" + cls->name + "\">" + word + "</a>";
      at = end;
      continue;
    }
    const bool quiet = std::find(kWords.begin(), kWords.end(), word) != kWords.end();
    html += quiet ? "<i>" + word + "</i>" : XmlEscaped(word);
    at = end;
  }
  return html;
}

std::string Percent(double component) {
  return ComponentText(std::clamp(component, 0.0, 1.0) * 100) + "%";
}

std::string SwatchHtml(const ColourCard& card) {
  std::string value = card.hex;
  if (card.alpha < 1) value += ", alpha " + ComponentText(card.alpha);
  const std::string css = "rgb(" + Percent(card.red) + " " + Percent(card.green) + " " + Percent(card.blue) +
                          " / " + Percent(card.alpha) + ")";
  const std::string detail = card.components.empty() ? card.space : card.space + " " + card.components;
  return R"(<div class="swatch"><span style="--c:)" + css + R"("></span><b>)" + XmlEscaped(value) +
         "</b><small>" + XmlEscaped(detail) + "</small></div>\n";
}

class Page {
 public:
  Page(const std::vector<ClassText>& texts, const std::vector<ColourCard>& predefined) : texts_(texts) {
    for (const ColourCard& card : predefined) cards_[card.name] = &card;
  }

  std::string Make(const std::string& subtitle) {
    for (const ClassText& text : texts_) AddClass(text);
    return std::string("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n") +
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n" +
           "<meta name=\"color-scheme\" content=\"light dark\">\n<title>QVXColor reference</title>\n<style>" +
           kDocsStyle + "</style>\n</head>\n<body>\n" +
           "<a class=\"skip\" href=\"#main\">Skip to the members</a>\n<header>\n<h1>QVXColor "
           "reference</h1>\n<p>" +
           XmlEscaped(subtitle) +
           "</p>\n<label for=\"search\">Search</label>\n<input id=\"search\" type=\"search\" "
           "autocomplete=\"off\" " +
           "spellcheck=\"false\" placeholder=\"Name, type or word ( / leads here)\">\n" +
           "<output id=\"count\" for=\"search\" aria-live=\"polite\"></output>\n</header>\n<nav "
           "aria-label=\"Members\">\n<details id=\"contents\" open>\n<summary>Contents</summary>\n" +
           contents_ + "</details>\n</nav>\n<main id=\"main\" tabindex=\"-1\">\n" + main_ +
           "<p id=\"none\" hidden>No member has all of these words.</p>\n</main>\n<script>" + kDocsScript +
           "</script>\n</body>\n</html>\n";
  }

 private:
  void AddClass(const ClassText& text) {
    const Class* const cls = ClassOf(text);
    if (cls == nullptr) return;
    members_.clear();
    overloads_.clear();
    for (const Member& member : MembersOf(*cls)) {
      members_[member.Key()] = member;
      ++overloads_[member.Name()];
    }
    main_ += R"(<section class="class" id=")" + text.name + "\">\n<h2>" + text.name + "</h2>\n" +
             Paragraphs(text.said) + Program("First steps", text.said.program);
    contents_ += R"(<section><h2><a href="#)" + text.name + R"(">)" + text.name + "</a></h2>\n";
    for (const GroupText& group : text.groups) {
      main_ += "<section class=\"group\">\n<h3>" + XmlEscaped(group.title) + "</h3>\n" +
               Paragraphs(group.said) + Fields(group.said) + Program("Example", group.said.program);
      contents_ += "<h3>" + XmlEscaped(group.title) + "</h3>\n<ul>\n";
      for (const MemberText& member : group.members) AddMember(text, member);
      main_ += "</section>\n";
      contents_ += "</ul>\n";
    }
    main_ += "</section>\n";
    contents_ += "</section>\n";
  }

  void AddMember(const ClassText& cls, const MemberText& text) {
    const Member& member = members_.at(text.declaration);
    std::string id = cls.name + "." + member.Name();
    const int uses = ++ids_[id];
    if (uses > 1) id += "-" + std::to_string(uses);
    std::string name = XmlEscaped(member.Name());
    if (overloads_[member.Name()] > 1)
      name += " <small>(" + XmlEscaped(member.ParameterNames()) + ")</small>";
    main_ += "<article id=\"" + XmlEscaped(id) + "\" data-in=\"" + cls.name + "\">\n<h4><a href=\"#" +
             XmlEscaped(id) + "\">" + name + "</a> <span class=\"kind\">" + member.Kind() + "</span></h4>\n";
    const auto card = cards_.find(member.Name());
    if (member.method != nullptr && member.method->shared && card != cards_.end())
      main_ += SwatchHtml(*card->second);
    main_ += "<pre><code>" + Signature(member.Signature(), texts_) + "</code></pre>\n" +
             Paragraphs(text.said) + Fields(text.said, member.Defaults()) + "</article>\n";
    contents_ += "<li><a href=\"#" + XmlEscaped(id) + "\">" + name + "</a></li>\n";
  }

  const std::vector<ClassText>& texts_;
  std::map<std::string, const ColourCard*> cards_;
  std::map<std::string, Member> members_;  // of the class in work
  std::map<std::string, int> overloads_;   // of the class in work: how many by that name
  std::map<std::string, int> ids_;
  std::string main_;
  std::string contents_;
};

}  // namespace

std::string ReferencePage(const std::vector<ClassText>& texts, const std::vector<ColourCard>& predefined,
                          const std::string& subtitle) {
  return Page(texts, predefined).Make(subtitle);
}

}  // namespace hostrun
