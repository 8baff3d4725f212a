#pragma once

namespace brisko {

void runPlay();
void runPlayCheck();

}  // namespace brisko
