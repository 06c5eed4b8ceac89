// A compiled page: its code (a Unit), the names of its global variables, procedures, classes and
// constants, its directives and the text of its files (for the source line of an error).
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "corvane/script.h"
#include "script/tree.h"

namespace corvane::script {

struct GlobalName {
  std::string name;
  bool declared = false;  // by Dim, Public, Private, ReDim, Const; not just assigned or read
};

// The global names code being compiled sees, and where new ones go: the page's own tables while
// the page compiles; the page's and the run's for code compiled while the page runs (Execute).
class Names {
 public:
  virtual ~Names() = default;
  virtual int FindGlobal(const std::string& lower) const = 0;  // -1 when there is none
  virtual bool IsDeclared(int global) const = 0;
  virtual int AddGlobal(const std::string& name, bool declared) = 0;
  virtual void Declare(int global) = 0;
  virtual const ProcDef* FindProc(const std::string& lower) const = 0;
  virtual const ClassDef* FindClass(const std::string& lower) const = 0;
  virtual const Variant* FindConst(const std::string& lower) const = 0;
  virtual bool OptionExplicit() const = 0;
};

class Program : public Unit, public CompiledPage {
 public:
  const PageDirectives& Directives() const override { return directives; }
  const std::vector<std::string>& Files() const override { return filePaths; }

  PageDirectives directives;
  std::vector<std::string> filePaths;
  std::vector<PageFile> sources;
  std::vector<GlobalName> globals;
  std::unordered_map<std::string, int> globalIndex;  // lower-case names
  std::unordered_map<std::string, const ProcDef*> procIndex;
  std::unordered_map<std::string, const ClassDef*> classIndex;
  std::unordered_map<std::string, Variant> consts;
  bool optionExplicit = false;
};

// The page's own tables as Names.
class ProgramNames : public Names {
 public:
  explicit ProgramNames(Program& p) : p_(p) {}
  int FindGlobal(const std::string& lower) const override {
    auto it = p_.globalIndex.find(lower);
    return it == p_.globalIndex.end() ? -1 : it->second;
  }
  bool IsDeclared(int global) const override { return p_.globals[global].declared; }
  int AddGlobal(const std::string& name, bool declared) override {
    p_.globals.push_back({name, declared});
    int index = static_cast<int>(p_.globals.size() - 1);
    p_.globalIndex.emplace(Lower(name), index);
    return index;
  }
  void Declare(int global) override { p_.globals[global].declared = true; }
  const ProcDef* FindProc(const std::string& lower) const override {
    auto it = p_.procIndex.find(lower);
    return it == p_.procIndex.end() ? nullptr : it->second;
  }
  const ClassDef* FindClass(const std::string& lower) const override {
    auto it = p_.classIndex.find(lower);
    return it == p_.classIndex.end() ? nullptr : it->second;
  }
  const Variant* FindConst(const std::string& lower) const override {
    auto it = p_.consts.find(lower);
    return it == p_.consts.end() ? nullptr : &it->second;
  }
  bool OptionExplicit() const override { return p_.optionExplicit; }

 private:
  Program& p_;
};

}  // namespace corvane::script
