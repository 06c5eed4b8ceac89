// The class registry: every creatable class of the library (the five components and the data-access
// objects ADODB.Connection and ADODB.Recordset), found by ProgID or CLSID.
#pragma once

#include <string_view>
#include <vector>

#include "corvane/object.h"

namespace corvane {

// Creates a registered class by ProgID (case-insensitive) or CLSID ("{...}", any case, braces
// optional). An unknown one raises 429 ("ActiveX component can't create object"). It has the shape of
// host::ClassFactory, so a page host hands it to its pages for Server.CreateObject.
Object CreateObject(std::string_view progIDOrClsid);

// All registered classes.
const std::vector<const ClassInfo*>& RegisteredClasses();
// The class a ProgID or CLSID names; nullptr when none.
const ClassInfo* FindClass(std::string_view progIDOrClsid);

}  // namespace corvane
