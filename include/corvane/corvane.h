// The public facade of corvane: values, objects and the class registry, host objects, data access and
// the platform's text, date, code page and drive path functions.
#pragma once

#include "corvane/ado.h"
#include "corvane/codepage.h"
#include "corvane/dates.h"
#include "corvane/drive_path.h"
#include "corvane/error.h"
#include "corvane/host.h"
#include "corvane/object.h"
#include "corvane/registry.h"
#include "corvane/text.h"
#include "corvane/variant.h"
