#include "script/operators.h"
