// Says one line: what a program of the C++ run-time library costs from its start to its end.
#include <iostream>

int main() {
    std::cout << "small 1.0.0\n";
    return 0;
}
