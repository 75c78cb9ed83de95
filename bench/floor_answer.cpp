/// The least that a server can do: for every line that comes in, the line of a file goes out. `floor-answer FILE`.
#include <fstream>
#include <iostream>
#include <string>
#include <unistd.h>

int main(int count, char** words)
{
    std::ifstream file(count == 2 ? words[1] : "");
    std::string answer;
    if (!std::getline(file, answer))
        return 2;
    answer += '\n';
    for (std::string line; std::getline(std::cin, line);) {
        if (line.find("\"id\":") != std::string::npos // notifications get no answer
            && write(STDOUT_FILENO, answer.data(), answer.size()) != static_cast<ssize_t>(answer.size()))
            return 1;
    }
    return 0;
}
