#pragma once

#include <string>
#include <vector>

namespace brisko {

using Argv = std::vector<std::string>;

// The release commands that undo what the given commands (run in this order, all successfully)
// left pressed: buttons at the last pointer position in press order, then ordinary keys, then
// modifier keys from the last pressed to the first, each key release carrying the modifiers that
// stay held.
std::vector<Argv> liftArgvs(const std::vector<Argv>& argvs);

}  // namespace brisko
