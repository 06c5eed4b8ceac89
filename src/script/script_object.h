// Instances of script classes, and the other objects the interpreter hands out (Err, GetRef's).
//
// An instance is a Dispatch like any host object, so it can be stored in a Variant or in Session,
// compared with Is and called from C++ by name; the interpreter calls its members directly. When its
// last reference goes, Class_Terminate runs at the next statement boundary of the run that made it
// (never in the middle of an assignment); when that run has ended, the instance just goes.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "corvane/object.h"
#include "corvane/variant.h"
#include "script/tree.h"

namespace corvane::script {

struct RunLink;

// Fills `c.info` so that code outside the interpreter reaches the class's public members by name
// (a default member also answers dispid 0).
void BuildClassInfo(ClassDef& c);

class ScriptObject : public Dispatch {
 public:
  ScriptObject(const ClassDef& cls, std::shared_ptr<const Unit> unit, std::shared_ptr<RunLink> link);
  const ClassInfo& Info() const override { return cls_.info; }
  const ClassDef& cls() const { return cls_; }
  Variant& Field(int i) { return fields_[i]; }
  const std::shared_ptr<RunLink>& link() const { return link_; }
  bool terminated = false;

  // A member called from outside the interpreter (through the class's member table).
  Variant CallFromHost(int member, InvokeKind kind, Args& args);

  // Whether a Dispatch is a script instance (its class table is one BuildClassInfo made).
  static ScriptObject* From(Dispatch* d);

 private:
  const ClassDef& cls_;
  std::shared_ptr<const Unit> unit_;  // keeps the class alive
  std::shared_ptr<RunLink> link_;
  std::vector<Variant> fields_;
};

// The deleter of instances: their termination waits for a statement boundary of the run.
void ReleaseScriptObject(ScriptObject* object);

// Err: the last error On Error Resume Next trapped.
class ErrObject : public Dispatch {
 public:
  const ClassInfo& Info() const override;
  int32_t number = 0;
  std::string description;
  std::string source;
  std::string helpFile;
  int32_t helpContext = 0;
  void Clear() {
    number = 0;
    description.clear();
    source.clear();
    helpFile.clear();
    helpContext = 0;
  }
  // Err.Raise number[, source[, description[, helpfile[, helpcontext]]]]
  [[noreturn]] void Raise(Args& args);
};

// GetRef("name"): calling it (its default member) calls the procedure.
class ProcRefObject : public Dispatch {
 public:
  ProcRefObject(const ProcDef& proc, std::shared_ptr<const Unit> unit, std::shared_ptr<RunLink> link)
      : proc_(proc), unit_(std::move(unit)), link_(std::move(link)) {}
  const ClassInfo& Info() const override;
  Variant Call(Args& args);

 private:
  const ProcDef& proc_;
  std::shared_ptr<const Unit> unit_;
  std::shared_ptr<RunLink> link_;
};

}  // namespace corvane::script
