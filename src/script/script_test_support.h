// Running pages in tests: an in-memory site, a page's output, its error, and a small collection
// object (a host object with a default member, by-reference arguments and For Each).
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "corvane/error.h"
#include "corvane/script.h"
#include "runtime/members.h"

namespace corvane::script::testing {

// What a run gave: the output, and the error that stopped it (number 0: none).
struct Outcome {
  std::string out;
  int32_t number = 0;
  std::string description;
  std::string file;
  int line = 0;
  std::string sourceLine;
  bool compile = false;
};

using Site = std::map<std::string, std::string>;

inline FileLoader LoaderOf(const Site& site) {
  return [&site](std::string_view path) -> std::optional<PageFile> {
    for (const auto& [p, text] : site)
      if (p.size() == path.size() && std::equal(p.begin(), p.end(), path.begin(), [](char a, char b) {
            return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
          }))
        return PageFile{p, text};
    return std::nullopt;
  };
}

inline Outcome Record(const ScriptError& e, std::string out) {
  return {std::move(out), e.Number(),     e.Description(),   e.Where().file,
          e.Where().line, e.SourceLine(), e.IsCompileError()};
}

// Compiles and runs /page.asp of `site` (or `page` alone), with `context` (its writer is replaced).
inline Outcome RunSite(const Site& site, const std::string& path = "/page.asp", RunContext context = {}) {
  Outcome o;
  try {
    auto compiled = CompilePage(path, LoaderOf(site));
    context.write = [&o](std::string_view t) { o.out += t; };
    ScriptRun run(compiled, std::move(context));
    run.Run();
  } catch (const ScriptError& e) {
    return Record(e, o.out);
  }
  return o;
}

inline Outcome RunPage(const std::string& page, RunContext context = {}) {
  return RunSite({{"/page.asp", page}}, "/page.asp", std::move(context));
}

// The output of code (without <% %>), or "error N" when it stopped with error N. The code may write
// with `W value`.
inline std::string Output(const std::string& code, RunContext context = {}) {
  Outcome o = RunPage("<% Sub W(v) %><%= v %><% End Sub %><%" + code + "\n%>", std::move(context));
  return o.number ? o.out + "error " + std::to_string(o.number) : o.out;
}

// A list with a default member Item(i) (read and write), Count, Add, Double(ByRef n) and For Each.
class Bag : public Dispatch {
 public:
  std::vector<Variant> items;
  const ClassInfo& Info() const override {
    static const ClassInfo info{
        .className = "Bag",
        .members =
            {
                ReadWrite<Bag>(
                    "Item", 0, [](Bag& b, Args& a) { return b.items.at(Arg(a, 0).ToLong()); },
                    [](Bag& b, Args& a, const Variant& v) { b.items.at(Arg(a, 0).ToLong()) = v; }),
                Reader<Bag>("Count", 1, [](Bag& b) { return static_cast<int32_t>(b.items.size()); }),
                Method<Bag>("Add", 2, [](Bag& b, Args& a) { b.items.push_back(Arg(a, 0)); }),
                Method<Bag>("Double", 3, [](Bag&, Args& a) { RefArg(a, 0) = RefArg(a, 0).ToLong() * 2; }),
            },
    };
    return info;
  }
  std::vector<Variant> Elements() override { return items; }
};

// A RunContext whose named object "Bag" is a new Bag holding `items`.
inline RunContext WithBag(std::vector<Variant> items, std::shared_ptr<Bag>* out = nullptr) {
  auto bag = std::make_shared<Bag>();
  bag->items = std::move(items);
  if (out) *out = bag;
  RunContext c;
  c.objects.emplace_back("Bag", Variant(Object(bag)));
  c.createObject = [](std::string_view progID) {
    return progID == "Test.Bag" ? Object(std::make_shared<Bag>()) : Object();
  };
  return c;
}

}  // namespace corvane::script::testing
