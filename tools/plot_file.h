#pragma once

#include "protocols/Point.h"

#include <cstdio>
#include <string>
#include <vector>

/// A file that gets a picture of the points at the end. It is made at once, so that a name that
/// cannot be ends the tool before anything has been measured.
class PlotFile {
  public:
    /// With an empty `path` there is no such file.
    explicit PlotFile(const std::string& path);
    PlotFile(const PlotFile&) = delete;
    PlotFile& operator=(const PlotFile&) = delete;
    ~PlotFile();

    /// What will be drawn; null without a file.
    std::vector<__PointMMT>* points() { return file_ ? &points_ : nullptr; }

    /// Draws, or ends the tool.
    void write(const std::string& protocol);

  private:
    const std::string path_;
    std::FILE* const file_;
    std::vector<__PointMMT> points_;
};
