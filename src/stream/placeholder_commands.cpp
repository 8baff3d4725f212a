#include "cli/not_built_yet.h"
#include "stream/input_stream.h"

namespace brisko {

void runInputStream() { notBuiltYet("input-stream"); }

}  // namespace brisko
