#include "cli/not_built_yet.h"
#include "probes/probes.h"

namespace brisko {

void printCheck(bool) { notBuiltYet("check"); }
void printFlags() { notBuiltYet("check-flags"); }
void printGeometry() { notBuiltYet("geometry"); }
void printSession() { notBuiltYet("session"); }

}  // namespace brisko
