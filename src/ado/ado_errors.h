// The data-access errors that corvane::Error has no factory for (yet), with the texts users know.
#pragma once

#include "corvane/error.h"

namespace corvane::ado::detail {

inline Error ArgumentsOutOfRange() {  // 3001
  return Error(3001, "Arguments are of the wrong type, are out of acceptable range, or are in conflict "
                     "with one another.");
}
inline Error ObjectIsOpen() {  // 3705
  return Error(3705, "Operation is not allowed when the object is open.");
}
inline Error ProviderNotFound() {  // 3706
  return Error(3706, "Provider cannot be found. It may not be properly installed.");
}
inline Error ConnectionUnusable() {  // 3709
  return Error(3709, "The connection cannot be used to perform this operation. It is either closed or "
                     "invalid in this context.");
}
inline Error RecordsetReadOnly() {  // 3251
  return Error(3251, "Current Recordset does not support updating. This may be a limitation of the "
                     "provider, or of the selected locktype.");
}

}  // namespace corvane::ado::detail
