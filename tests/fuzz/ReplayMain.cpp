// Runs a fuzz target without libFuzzer, with any compiler: the seeds, the files that are named, and
// a fixed number of inputs that grow out of the seeds, the same on every run of the program.
//
//     fuzz_numbers_replay [--runs=N] [--seed=N] [FILE...]
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "FuzzTarget.h"

namespace {

constexpr std::size_t kLongestInput = 4096;

// One seed, changed in one to eight places.
class Mutator {
public:
    Mutator(std::vector<std::string> seeds, std::uint32_t seed)
        : seeds_(std::move(seeds)), random_(seed) {}

    std::string Next() {
        if (seeds_.empty() || Below(8) == 0) {
            return Noise();
        }
        std::string input = seeds_[Below(seeds_.size())];
        for (std::size_t changes = 1 + Below(8); changes > 0; --changes) {
            Change(input);
        }
        if (input.size() > kLongestInput) {
            input.resize(kLongestInput);
        }
        return input;
    }

private:
    std::size_t Below(std::size_t bound) { return random_() % bound; }
    char AnyByte() { return static_cast<char>(random_() & 255u); }

    std::string Noise() {
        std::string input(Below(256), '\0');
        for (char& byte : input) {
            byte = AnyByte();
        }
        return input;
    }

    void Change(std::string& input) {
        const std::size_t at = Below(input.size() + 1);
        switch (Below(7)) {
            case 0:
                input.insert(at, 1 + Below(4), AnyByte());
                break;
            case 1:
                input.erase(at, 1 + Below(4));
                break;
            case 2:
                input.insert(at, input.substr(Below(input.size() + 1), Below(32)));
                break;
            case 3: {
                const std::string& other = seeds_[Below(seeds_.size())];
                input = input.substr(0, at) + other.substr(Below(other.size() + 1));
                break;
            }
            case 4:
                input.resize(Below(8) == 0 ? at : input.size());
                break;
            default:
                if (at < input.size()) {
                    static constexpr char kTelling[] = {'\0', '\x01', '\x7F', '\x80', '\xFF'};
                    input[at] = Below(2) == 0 ? AnyByte() : kTelling[Below(sizeof kTelling)];
                }
        }
    }

    std::vector<std::string> seeds_;
    std::mt19937 random_;
};

void Feed(const std::string& input) {
    // A copy of exactly that size, so that a read behind it is seen.
    std::vector<std::uint8_t> bytes(input.begin(), input.end());
    bytes.shrink_to_fit();
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

std::string ReadAll(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    fuzzing::Require(file.good(), "a named input can be read");
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace

int main(int argumentCount, char** arguments) {
    unsigned long runs = 0;
    unsigned long seed = 1;
    std::vector<std::string> seeds = fuzzing::Seeds();
    bool named = false;
    for (int i = 1; i < argumentCount; ++i) {
        const char* const argument = arguments[i];
        if (std::strncmp(argument, "--runs=", 7) == 0) {
            runs = std::strtoul(argument + 7, nullptr, 10);
        } else if (std::strncmp(argument, "--seed=", 7) == 0) {
            seed = std::strtoul(argument + 7, nullptr, 10);
        } else {
            named = true;
            seeds.push_back(ReadAll(argument));
        }
    }
    if (runs == 0 && !named) {
        std::fprintf(stderr, "usage: %s [--runs=N] [--seed=N] [FILE...]\n", arguments[0]);
        return 1;
    }
    // The long form of the tests takes twenty times as many.
    runs *= std::getenv("RADIAL_BLUR_LONG") != nullptr ? 20U : 1U;
    const auto before = std::chrono::steady_clock::now();
    for (const std::string& input : seeds) {
        Feed(input);
    }
    Mutator mutator(seeds, static_cast<std::uint32_t>(seed));
    for (unsigned long run = 0; run < runs; ++run) {
        Feed(mutator.Next());
    }
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - before;
    std::printf("%lu inputs in %.1f s, no finding\n", runs + seeds.size(), time.count());
    return 0;
}
