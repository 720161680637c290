#include "benchutil.h"

// Filled in with the project figures.
void benchProject()
{
}
