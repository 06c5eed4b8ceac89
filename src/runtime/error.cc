#include "corvane/error.h"

namespace corvane {

Error Error::InvalidCall() { return Error(5, "Invalid procedure call or argument"); }
Error Error::Overflow() { return Error(6, "Overflow"); }
Error Error::SubscriptOutOfRange() { return Error(9, "Subscript out of range"); }
Error Error::TypeMismatch() { return Error(13, "Type mismatch"); }
Error Error::BadFileName() { return Error(52, "Bad file name or number"); }
Error Error::FileNotFound() { return Error(53, "File not found"); }
Error Error::DiskFull() { return Error(61, "Disk full"); }
Error Error::PathFileAccess() { return Error(75, "Path/File access error"); }
Error Error::PathNotFound() { return Error(76, "Path not found"); }
Error Error::ObjectNotSet() { return Error(91, "Object variable or With block variable not set"); }
Error Error::InvalidUseOfNull() { return Error(94, "Invalid use of Null"); }
Error Error::ObjectRequired() { return Error(424, "Object required"); }
Error Error::CannotCreateObject(const std::string& progID) {
  return Error(429, "ActiveX component can't create object", progID);
}
Error Error::NoSuchMember(const std::string& name) {
  return Error(438, "Object doesn't support this property or method", name);
}
Error Error::ArgumentNotOptional() { return Error(449, "Argument not optional"); }
Error Error::NotACollection() { return Error(451, "Object not a collection"); }
Error Error::ArgumentsOutOfRange() {
  return Error(3001,
               "Arguments are of the wrong type, are out of acceptable range, or are in conflict with "
               "one another.");
}
Error Error::NoCurrentRecord() {
  return Error(3021,
               "Either BOF or EOF is True, or the current record has been deleted. Requested "
               "operation requires a current record.");
}
Error Error::ItemNotFound(const std::string& name) {
  return Error(3265, "Item cannot be found in the collection corresponding to the requested name or ordinal.",
               name);
}
Error Error::RecordsetReadOnly() {
  return Error(3251,
               "Current Recordset does not support updating. This may be a limitation of the provider, or "
               "of the selected locktype.");
}
Error Error::ObjectClosed() { return Error(3704, "Operation is not allowed when the object is closed."); }
Error Error::ObjectIsOpen() { return Error(3705, "Operation is not allowed when the object is open."); }
Error Error::ProviderNotFound() {
  return Error(3706, "Provider cannot be found. It may not be properly installed.");
}
Error Error::ConnectionUnusable() {
  return Error(3709,
               "The connection cannot be used to perform this operation. It is either closed or invalid "
               "in this context.");
}
Error Error::Database(const std::string& message) { return Error(kDatabaseError, message); }

}  // namespace corvane
