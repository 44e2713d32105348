#include "tools/plot_file.h"

#include "tools/data_output.h"
#include "tools/plot.h"

#include <cerrno>

PlotFile::PlotFile(const std::string& path)
    : path_(path), file_(path.empty() ? nullptr : std::fopen(path.c_str(), "we")) {
    if (!file_ && !path.empty()) {
        fail_to_open(path, errno);
    }
}

PlotFile::~PlotFile() {
    if (file_) {
        std::fclose(file_);
    }
}

void PlotFile::write(const std::string& protocol) {
    if (!file_) {
        return;
    }
    std::fputs(plot_svg(protocol, points_).c_str(), file_);
    if (std::fflush(file_) != 0) {
        fail_to_open(path_, errno);
    }
}
