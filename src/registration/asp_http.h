// aspHttp: a creatable class with an empty interface.
#pragma once

#include "corvane/object.h"

namespace corvane {

class aspHttp : public Dispatch {
 public:
  const ClassInfo& Info() const override;
  Variant InvokeMember(int32_t dispid, InvokeKind kind, Args& args) override;
};

const ClassInfo& AspHttpClass();

}  // namespace corvane
