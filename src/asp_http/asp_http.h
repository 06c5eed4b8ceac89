// aspHttp: a creatable class with an empty interface.
#pragma once

#include "corvane/object.h"

namespace corvane {

class aspHttp : public Dispatch {
 public:
  const ClassInfo& Info() const override;
};

const ClassInfo& AspHttpClass();

}  // namespace corvane
