// The module beside what a user could pick instead: the same picture, the same blur, one run,
// alternating, medians.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <limits>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "EditorPeers.h"
#include "OpenCvPeers.h"
#include "TimedRender.h"

namespace {

using mv::benchmarks::RenderCase;

struct Options {
    std::filesystem::path folder = "peer-pictures";
    std::vector<int> sizes = {2, 12, 24};
    std::vector<double> lengths = {0.05, 0.25, 1.0};
    int repetitions = 5;
    bool withEditors = true;
};

double Now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

cv::Size SizeOf(int megapixels) {
    return megapixels == 2    ? cv::Size(1732, 1155)
           : megapixels == 12 ? cv::Size(4243, 2828)
                              : cv::Size(6000, 4000);
}

// Small bright lights on a dark slope: their streaks show steps where a tool takes samples.
cv::Mat MakePicture(cv::Size size) {
    cv::Mat picture(size, CV_8UC3);
    for (int y = 0; y < size.height; ++y) {
        auto* row = picture.ptr<cv::Vec3b>(y);
        for (int x = 0; x < size.width; ++x) {
            const int slope = 40 * y / size.height;
            row[x] = cv::Vec3b(static_cast<uchar>(20 + slope), static_cast<uchar>(16 + slope / 2),
                               static_cast<uchar>(24 + 30 * x / size.width));
        }
    }
    cv::RNG random(7);
    const int unit = std::max(size.width / 1000, 1);
    for (int i = 0; i < 300; ++i) {
        const cv::Point at(random.uniform(0, size.width), random.uniform(0, size.height));
        const cv::Scalar light(random.uniform(120, 256), random.uniform(120, 256),
                               random.uniform(120, 256));
        cv::circle(picture, at, unit * random.uniform(1, 4), light, cv::FILLED);
    }
    return picture;
}

mv::host::HostDocument ToDocument(const cv::Mat& picture) {
    mv::host::HostImage image(picture.cols, picture.rows, 3, 8);
    std::copy(picture.datastart, picture.dataend, image.bytes.begin());
    return mv::host::MakeDocument(std::move(image), false);
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// One picture and one length through everything.
class Comparison {
public:
    Comparison(const Options& options, cv::Size size, double length)
        : options_(options), length_(length), picture_(MakePicture(size)) {
        render_.width = size.width;
        render_.height = size.height;
        render_.strength = length;
        std::filesystem::create_directories(options.folder);
        file_ = std::filesystem::absolute(options.folder) / "picture.png";
        cv::Mat swapped;
        cv::cvtColor(picture_, swapped, cv::COLOR_RGB2BGR);
        cv::imwrite(file_.string(), swapped);
        document_ = ToDocument(picture_);
    }

    void Run(const std::string& name) {
        const bool keeps = name.find("24 MP, length 0.25") == 0;
        std::vector<Tool> tools = Tools(keeps);
        std::vector<std::vector<double>> seconds(tools.size());
        for (int i = 0; i < options_.repetitions; ++i) {
            for (std::size_t tool = 0; tool < tools.size(); ++tool) {
                seconds[tool].push_back(tools[tool].run());
            }
        }
        const double own = Median(seconds[0]);
        for (std::size_t tool = 0; tool < tools.size(); ++tool) {
            const double time = Median(seconds[tool]);
            if (time <= 0.0) {
                std::printf("| %s | %s | failed | |\n", name.c_str(), tools[tool].name);
            } else {
                std::printf("| %s | %s | %.3f | %.3f |\n", name.c_str(), tools[tool].name, time,
                            own / time);
            }
        }
        std::fflush(stdout);
    }

private:
    struct Tool {
        const char* name;
        std::function<double()> run;
    };

    // The middle of the upper right quarter at 100 %, where streaks are long.
    void Keep(const cv::Mat& rgb, const char* name) const {
        cv::Mat part;
        const cv::Rect place(rgb.cols * 3 / 4, rgb.rows / 5, 360, 240);
        cv::cvtColor(rgb(place), part, cv::COLOR_RGB2BGR);
        cv::imwrite((options_.folder / (std::string(name) + ".png")).string(), part);
    }

    void KeepFile(const std::filesystem::path& result, const char* name) const {
        const cv::Mat picture = cv::imread(result.string(), cv::IMREAD_COLOR);
        if (!picture.empty()) {
            cv::Mat rgb;
            cv::cvtColor(picture, rgb, cv::COLOR_BGR2RGB);
            Keep(rgb, name);
        }
    }

    Tool OpenCv(const char* name, cv::Mat (*blur)(const cv::Mat&, double), const char* file) {
        return {name, [this, blur, file] {
                    const double start = Now();
                    const cv::Mat result = blur(picture_, length_);
                    const double time = Now() - start;
                    if (file != nullptr) {
                        Keep(result, file);
                    }
                    return time;
                }};
    }

    Tool Editor(const char* name,
                double (*blur)(const std::filesystem::path&, double, const std::filesystem::path&),
                const char* file) {
        return {name, [this, blur, file] {
                    std::filesystem::path result;
                    if (file != nullptr) {
                        result = file_.parent_path() / "result.png";
                    }
                    const double time = blur(file_, length_, result);
                    if (file != nullptr) {
                        KeepFile(result, file);
                    }
                    return time;
                }};
    }

    std::vector<Tool> Tools(bool keeps) {
        std::vector<Tool> tools;
        tools.push_back(
            {"this module", [this, keeps] {
                 mv::host::HostImage result;
                 const double time = mv::benchmarks::Render(mv::benchmarks::LoadModule(), render_,
                                                            document_, keeps ? &result : nullptr)
                                         .seconds;
                 if (keeps) {
                     Keep(cv::Mat(picture_.size(), CV_8UC3, result.bytes.data()), "module");
                 }
                 return time;
             }});
        using namespace mv::benchmarks;
        tools.push_back(OpenCv("OpenCV, polar", PolarBlur, keeps ? "opencv-polar" : nullptr));
        tools.push_back(OpenCv("OpenCV, zoom and average, linear float", ZoomBlurFloat,
                               keeps ? "opencv-float" : nullptr));
        tools.push_back(OpenCv("OpenCV, zoom and average, 8 bit", ZoomBlurBytes,
                               keeps ? "opencv-bytes" : nullptr));
        if (options_.withEditors) {
            tools.push_back(Editor("G'MIC blur_radial", GmicRadialBlur, keeps ? "gmic" : nullptr));
            tools.push_back(Editor("GIMP zoom blur", GimpZoomBlur, keeps ? "gimp" : nullptr));
        }
        return tools;
    }

    const Options& options_;
    double length_;
    cv::Mat picture_;
    RenderCase render_;
    std::filesystem::path file_;
    mv::host::HostDocument document_;
};

}  // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app("Times the module beside other tools' radial blurs.");
    app.add_option("--folder", options.folder, "where pictures go")->capture_default_str();
    app.add_option("--sizes", options.sizes, "megapixels: 2, 12, 24")->delimiter(',');
    app.add_option("--lengths", options.lengths, "lengths of the blur, 0 to 1")->delimiter(',');
    app.add_option("--repetitions", options.repetitions, "runs of each")->capture_default_str();
    app.add_flag("!--no-editors", options.withEditors, "leave out GIMP and G'MIC");
    CLI11_PARSE(app, argc, argv);
    std::printf("| picture | tool | seconds | this module's share |\n|---|---|---:|---:|\n");
    for (const int size : options.sizes) {
        for (const double length : options.lengths) {
            char name[64];
            std::snprintf(name, sizeof name, "%d MP, length %g", size, length);
            Comparison(options, SizeOf(size), length).Run(name);
        }
    }
    return 0;
}
