#pragma once

namespace brisko {

void printCheck(bool prompt);
void printFlags();
void printGeometry();
void printSession();

}  // namespace brisko
