/// The least that a C++ program can do: start, print a line, end.
#include <iostream>

int main()
{
    std::cout << "Hello.\n";
}
