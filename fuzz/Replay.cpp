// Feeds each file of a corpus, FOLDER/TARGET/FILE, once.
// usage: fuzz_replay FOLDER
#include <filesystem>
#include <fstream>
#include <iterator>

#include "fuzz/Targets.h"

int main(int count, char** arguments)
{
    namespace fs = std::filesystem;
    for (const auto& [name, target] : J4Fuzz::Targets) {
        size_t inputs = 0;
        for (const fs::directory_entry& entry :
             fs::directory_iterator(fs::path(count > 1 ? arguments[1] : ".") / name)) {
            std::fprintf(stderr, "%s\n", entry.path().string().c_str());
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string input{std::istreambuf_iterator<char>(file), {}};
            target(reinterpret_cast<const uint8_t*>(input.data()), input.size());
            ++inputs;
        }
        J4Fuzz::Require(inputs > 0, "there are inputs for " + name);
        std::printf("%s: %zu inputs\n", name.c_str(), inputs);
    }
    return 0;
}
