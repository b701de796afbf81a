// SPDX-License-Identifier: MIT
// Runs a fuzz harness on the files of the named folders, without a fuzzer: draw_replay FOLDER...
#include "input.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

int main(int count, char **folders) {
    int files = 0;
    for (int i = 1; i < count; ++i)
        for (const auto &entry : std::filesystem::directory_iterator(folders[i])) {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
            fprintf(stderr, "%s\n",
                    entry.path().c_str()); // the last one named is the one that broke
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
            ++files;
        }
    return files == 0;
}
