// corvane::Error: the one exception type of the library.
//
// A failure carries the platform's error number and its description, as a script host would show
// them. Nothing in the components traps errors: a failed call ends the method and reaches the page.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

namespace corvane {

class Error : public std::exception {
 public:
  Error(int32_t number, std::string description, std::string source = "")
      : number_(number), description_(std::move(description)), source_(std::move(source)) {}

  int32_t Number() const noexcept { return number_; }
  const std::string& Description() const noexcept { return description_; }
  const std::string& Source() const noexcept { return source_; }
  const char* what() const noexcept override { return description_.c_str(); }

  // The platform's run-time errors, with their standard English descriptions.
  static Error InvalidCall();          //    5 Invalid procedure call or argument
  static Error Overflow();             //    6 Overflow
  static Error SubscriptOutOfRange();  //    9 Subscript out of range
  static Error TypeMismatch();         //   13 Type mismatch
  static Error BadFileName();          //   52 Bad file name or number
  static Error FileNotFound();         //   53 File not found
  static Error DiskFull();             //   61 Disk full
  static Error PathFileAccess();       //   75 Path/File access error
  static Error PathNotFound();         //   76 Path not found
  static Error ObjectNotSet();         //   91 Object variable or With block variable not set
  static Error InvalidUseOfNull();     //   94 Invalid use of Null
  static Error ObjectRequired();       //  424 Object required
  static Error CannotCreateObject(const std::string& progID);  // 429
  static Error NoSuchMember(const std::string& name);          // 438
  static Error ArgumentNotOptional();                          //  449 Argument not optional
  static Error NotACollection();                               //  451 Object not a collection
  // Data access (the texts ADO gives).
  static Error ArgumentsOutOfRange();                  // 3001 wrong type, out of range or in conflict
  static Error NoCurrentRecord();                      // 3021 EOF or BOF
  static Error RecordsetReadOnly();                    // 3251 the recordset cannot be updated
  static Error ItemNotFound(const std::string& name);  // 3265 no such field
  static Error ObjectClosed();                         // 3704 operation on a closed object
  static Error ObjectIsOpen();                         // 3705 operation on an open object
  static Error ProviderNotFound();                     // 3706 no driver for the connection string
  static Error ConnectionUnusable();                   // 3709 closed or invalid connection
  // A database's own error (0x80040E14), carrying the driver's message.
  static Error Database(const std::string& message);

  static constexpr int32_t kDatabaseError = -2147217900;  // 0x80040E14

 private:
  int32_t number_;
  std::string description_;
  std::string source_;
};

// Thrown by Response.End (and by Server.Transfer once the other page has run): the page stops where
// it is and what it wrote is sent. It is not an error: On Error Resume Next does not catch it.
struct PageEnd {};

}  // namespace corvane
