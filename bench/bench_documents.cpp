#include "benchutil.h"

// Filled in with the documents figures.
void benchDocuments()
{
}
