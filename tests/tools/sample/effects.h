/* A header set for the generator's tests. */
#include "effects/sample.h"
#include "effects/absent.h"
