// The upload component keeps what follows the last "\" or ":" of a name the browser sends and takes
// the rest as a path from the folder it is given: a "/" in a sent name ("../3/a.txt") would reach
// another person's folder. This check refuses (400) a multipart body in which any quoted
// filename="..." holds a "/", as the component would find it: contents included. It reads the body
// where it lies, so an upload is not copied for it.
#pragma once

#include "page_guard.h"

namespace corvane::site {

server::GuardVerdict CheckUploadNames(const server::GuardRequest& request);

}  // namespace corvane::site
