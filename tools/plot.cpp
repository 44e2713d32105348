#include "tools/plot.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <vector>

namespace {

// In pixels.
constexpr double margin = 40;
constexpr double view_width = 720;
constexpr double tallest_view = 420;
constexpr double lowest_view = 40;
constexpr double caption = 30;
constexpr double bar_height = 60;

/// More than these get no number each, but every second, third, ... one does, where there is room.
constexpr std::size_t most_numbers = 60;
constexpr double number_width = 28;
constexpr double number_height = 10;

constexpr const char* style = R"(<style>
svg { font-family: sans-serif; font-size: 12px; } .title { font-size: 18px; }
.number { font-size: 9px; } .frame, .bar { fill: none; }
.paper { fill: #ffffff; } text { fill: #202124; } circle { fill: #0b57d0; }
.frame { stroke: #9aa0a6; } .bar { stroke: #202124; }
@media (prefers-color-scheme: dark) {
.paper { fill: #17191c; } text { fill: #e8eaed; } circle { fill: #8ab4f8; }
.frame { stroke: #6f757b; } .bar { stroke: #e8eaed; }
}
</style>
<rect class="paper" width="100%" height="100%"/>
)";

using Axis = double __PointMMT::*;

struct Range {
    double low = 0;
    double high = 0;

    double size() const { return high - low; }
};

Range range_of(std::span<const __PointMMT> points, Axis axis) {
    if (points.empty()) {
        return {};
    }
    const auto [low, high] = std::ranges::minmax(points, {}, axis);
    return {low.*axis, high.*axis};
}

/// The largest of 1, 2 and 5 times a power of ten that is not above `mm`.
double round_length(double mm) {
    const double power = std::pow(10, std::floor(std::log10(mm)));
    const double factor = mm / power;
    return (factor >= 5 ? 5 : factor >= 2 ? 2 : 1) * power;
}

class Picture {
  public:
    explicit Picture(std::span<const __PointMMT> points)
        : points_(points), x_(range_of(points, &__PointMMT::x)) {
        const double up = std::max(range_of(points, &__PointMMT::y).size(),
                                   range_of(points, &__PointMMT::z).size());
        const double largest = std::max(x_.size(), up);
        const double least = largest > 0 ? largest / 1000 : 10; // a single point: 10 mm of room
        pixels_per_mm_ =
            std::min(view_width / std::max(x_.size(), least), tallest_view / std::max(up, least));
    }

    void view(const char* name, char letter, Axis axis) {
        const Range up = range_of(points_, axis);
        const double height = std::max(up.size() * pixels_per_mm_, lowest_view);
        text(margin, top_ + caption - 10, "caption",
             fmt::format("{}: x {:g} to {:g} mm to the right, {} {:g} to {:g} mm up", name, x_.low,
                         x_.high, letter, up.low, up.high));
        top_ += caption + margin / 4;
        draw(R"(<rect class="frame" x="{:.1f}" y="{:.1f}" width="{:.1f}" height="{:.1f}"/>)",
             margin / 2, top_, view_width + margin, height + margin);
        const double middle = top_ + (height + margin) / 2;
        numbered_.clear();
        for (std::size_t i = 0; i < points_.size(); ++i) {
            point(i, across(points_[i].x),
                  middle - (points_[i].*axis - (up.low + up.high) / 2) * pixels_per_mm_);
        }
        top_ += height + margin;
    }

    void scale_bar() {
        const double mm = round_length(view_width / 4 / pixels_per_mm_);
        const double length = mm * pixels_per_mm_;
        draw(R"(<path class="bar" d="M {:.1f} {:.1f} v 8 h {:.1f} v -8"/>)", margin, top_ + 16,
             length);
        text(margin + length + 8, top_ + 24, "caption", fmt::format("{:g} mm", mm));
        top_ += bar_height;
    }

    std::string finish(const std::string& title) {
        return fmt::format(
            R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {0:.0f} {1:.0f}" )"
            "width=\"{0:.0f}\" height=\"{1:.0f}\">\n{2}<title>{3}</title>\n"
            "<text class=\"title\" x=\"{4}\" y=\"{4}\">{3}</text>\n{5}</svg>\n",
            view_width + 2 * margin, top_, style, title, margin, drawing_);
    }

  private:
    /// Where `x` lies, the points being in the middle.
    double across(double x) const {
        return margin + view_width / 2 + (x - (x_.low + x_.high) / 2) * pixels_per_mm_;
    }

    void point(std::size_t index, double x, double y) {
        draw(R"(<circle cx="{:.2f}" cy="{:.2f}" r="3"/>)", x, y);
        const auto is_near = [x, y](const Place& other) {
            return std::abs(x - other.x) < number_width && std::abs(y - other.y) < number_height;
        };
        if (index % (points_.size() / most_numbers + 1) == 0 &&
            std::ranges::none_of(numbered_, is_near)) {
            text(x + 4, y - 4, "number", fmt::to_string(points_[index].number));
            numbered_.push_back({x, y});
        }
    }

    struct Place {
        double x;
        double y;
    };

    void text(double x, double y, const char* kind, const std::string& what) {
        draw(R"(<text class="{}" x="{:.1f}" y="{:.1f}">{}</text>)", kind, x, y, what);
    }

    template <typename... Parts>
    void draw(fmt::format_string<Parts...> shape, Parts&&... parts) {
        fmt::format_to(std::back_inserter(drawing_), shape, std::forward<Parts>(parts)...);
        drawing_ += '\n';
    }

    std::span<const __PointMMT> points_;
    const Range x_;
    double pixels_per_mm_ = 1;
    double top_ = margin + 10;
    std::vector<Place> numbered_; ///< in the view that is being drawn
    std::string drawing_;
};

} // namespace

std::string plot_svg(const std::string& protocol, std::span<const __PointMMT> points) {
    Picture picture(points);
    picture.view("Top view", 'y', &__PointMMT::y);
    picture.view("Side view", 'z', &__PointMMT::z);
    picture.scale_bar();
    return picture.finish(
        fmt::format("{}: {} {}", protocol, points.size(), points.size() == 1 ? "point" : "points"));
}
