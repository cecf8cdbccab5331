#include "EditorPeers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

namespace mv::benchmarks {
namespace {

// The whole output of a shell command.
std::string OutputOf(const std::string& command) {
    std::string output;
    FILE* const pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        return output;
    }
    std::array<char, 4096> part{};
    while (std::fgets(part.data(), part.size(), pipe) != nullptr) {
        output += part.data();
    }
    return pclose(pipe) == 0 ? output : std::string();
}

// The number behind the last such mark, or -1.
double NumberBehind(const std::string& text, const std::string& mark) {
    const std::size_t at = text.rfind(mark);
    return at == std::string::npos ? -1.0 : std::atof(text.c_str() + at + mark.size());
}

std::string Quoted(const std::filesystem::path& path) {
    return "\"" + path.string() + "\"";
}

}  // namespace

double GimpZoomBlur(const std::filesystem::path& picture, double strength,
                    const std::filesystem::path& result) {
    // Type 2 is zoom; its length counts 256ths of the distance to the centre.
    const int length = std::clamp(static_cast<int>(std::lround(256.0 * strength)), 1, 256);
    const std::filesystem::path script = picture.parent_path() / "blur.scm";
    std::ofstream file(script);
    file << "(let* ((image (car (gimp-file-load RUN-NONINTERACTIVE " << Quoted(picture) << " "
         << Quoted(picture) << ")))\n"
         << "       (layer (car (gimp-image-get-active-layer image)))\n"
         << "       (x (/ (car (gimp-image-width image)) 2))\n"
         << "       (y (/ (car (gimp-image-height image)) 2))\n"
         << "       (start (gettimeofday)))\n"
         << "  (plug-in-mblur RUN-NONINTERACTIVE image layer 2 " << length << " 0 x y)\n"
         << "  (let ((end (gettimeofday)))\n"
         << "    (gimp-message (string-append \"SECONDS=\" (number->string\n"
         << "      (+ (- (car end) (car start)) (/ (- (cadr end) (cadr start)) 1000000.0))))))\n";
    if (!result.empty()) {
        file << "  (file-png-save RUN-NONINTERACTIVE image layer " << Quoted(result) << " "
             << Quoted(result) << " 0 1 0 0 0 0 0)\n";
    }
    file << ")\n(gimp-quit 0)\n";
    file.close();
    return NumberBehind(OutputOf("gimp --no-interface --no-data --no-fonts --console-messages "
                                 "--batch - < " +
                                 Quoted(script) + " 2>&1"),
                        "SECONDS=");
}

double GmicRadialBlur(const std::filesystem::path& picture, double strength,
                      const std::filesystem::path& result) {
    const std::string amount = std::to_string(100.0 * strength) + "%";
    std::string command = "gmic " + Quoted(picture) + " tic blur_radial " + amount + " toc";
    if (!result.empty()) {
        command += " output " + Quoted(result);
    }
    return NumberBehind(OutputOf(command + " 2>&1"), "Elapsed time: ");
}

}  // namespace mv::benchmarks
