// Creates a component by ProgID and calls it late-bound, through the installed headers only.
#include <corvane/corvane.h>

#include <cstdio>

int main() {
  corvane::Object scheduler = corvane::CreateObject("corvane.scheduler");
  corvane::Variant monday = scheduler.Invoke("GetPrevMonday", {corvane::Variant::Date(2026, 11, 22)});
  std::printf("%s\n", monday.ToString().c_str());
  return monday.ToString() == "2026-11-16" ? 0 : 1;
}
