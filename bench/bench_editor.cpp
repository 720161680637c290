#include "benchutil.h"

// Filled in with the editor figures.
void benchEditor()
{
}
