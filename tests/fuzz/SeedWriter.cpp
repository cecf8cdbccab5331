// With libFuzzer: an empty corpus folder, the first one named, gets the target's seeds.
#include <filesystem>
#include <fstream>

#include "FuzzTarget.h"

extern "C" int LLVMFuzzerInitialize(int* argumentCount, char*** arguments) {
    namespace fs = std::filesystem;
    for (int i = 1; i < *argumentCount; ++i) {
        const fs::path folder = (*arguments)[i];
        std::error_code error;
        if (!fs::is_directory(folder, error)) {
            continue;
        }
        if (fs::is_empty(folder, error)) {
            int number = 0;
            for (const std::string& seed : fuzzing::Seeds()) {
                std::ofstream(folder / ("seed" + std::to_string(number++)), std::ios::binary)
                    << seed;
            }
        }
        break;
    }
    return 0;
}
