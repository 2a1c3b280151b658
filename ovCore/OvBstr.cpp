#include "OvBstr.h"
