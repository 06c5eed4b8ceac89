// RegExp: the language's regular expression object (`New RegExp`), and what its Execute gives: a
// Matches collection of Match objects, each with its SubMatches.
//
// Patterns are written in the platform's syntax (JavaScript's) and run on PCRE2. Positions and
// lengths (FirstIndex, Length) count UTF-16 units, as the text functions do. A malformed pattern
// raises 5017 when it is first used, not when it is assigned.
#pragma once

#include "corvane/object.h"

namespace corvane::script {

// A new RegExp, as `New RegExp` makes it: Pattern "", Global, IgnoreCase and MultiLine False.
Object NewRegExp();
// The class of RegExp objects. It carries the platform's ProgID (VBScript.RegExp), CLSID and IID, so
// a class table may also offer it to CreateObject.
const ClassInfo& RegExpClass();

}  // namespace corvane::script
