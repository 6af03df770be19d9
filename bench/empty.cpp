// A program that does nothing.

#include <iostream>

int main() {
  std::cout << std::flush;
}
