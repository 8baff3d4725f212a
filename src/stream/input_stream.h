#pragma once

namespace brisko {

[[noreturn]] void runInputStream();

}  // namespace brisko
