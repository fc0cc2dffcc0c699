// The smallest program of the same tool chain and options: what any program takes to start.
#include <iostream>

int main() {
  std::cout << "hello\n";
  return 0;
}
