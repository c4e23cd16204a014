// argument_writer FILE [ARGUMENT...]: writes its arguments to FILE, one a line, between '<' and
// '>'. The file appears when it is whole.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fputs("usage: argument_writer FILE [ARGUMENT...]\n", stderr);
        return 2;
    }
    const std::string draft = std::string(argv[1]) + ".new";
    {
        std::ofstream file(draft, std::ios::binary);
        for (int i = 2; i < argc; ++i) file << '<' << argv[i] << ">\n";
    }
    std::filesystem::rename(draft, argv[1]);
    return 0;
}
