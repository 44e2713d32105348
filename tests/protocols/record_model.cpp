#include "tests/protocols/record_model.h"

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <optional>

namespace {

constexpr auto npos = std::string::npos;

std::string only(const std::string& kept, std::string text) {
    std::erase_if(text, [&](char c) { return kept.find(c) == npos; });
    return text;
}

double number(const std::string& text) {
    static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
    return strtod_l(text.c_str(), nullptr, plain);
}

// A METROLEC text, word by word.
class Words {
  public:
    explicit Words(std::string text) : text_(std::move(text)) {}

    // The `kept` characters of the next word that has any; nothing at the end of the text.
    // Afterwards line_end() tells what stands behind the word.
    std::optional<std::string> next(const std::string& kept) {
        for (std::string word;;) {
            const std::size_t end = text_.find_first_of(" \t\r\n", at_);
            if (end == npos) {
                return std::nullopt;
            }
            word = only(kept, text_.substr(at_, end - at_));
            at_ = end + 1;
            if (!word.empty() || line_end()) {
                return word;
            }
        }
    }

    bool line_end() const { return text_[at_ - 1] == '\r' || text_[at_ - 1] == '\n'; }

    void skip_line() {
        if (!line_end()) {
            at_ = std::min(text_.find_first_of("\r\n", at_), text_.size() - 1) + 1;
        }
    }

  private:
    std::string text_;
    std::size_t at_ = 0;
};

// Whether the text goes on. A record that is none leaves `points` as it is.
bool add_metrolec_point(Words& words, std::vector<__PointMMT>& points) {
    double place[3], offsets[3]{};
    bool damaged = false;
    for (double& coordinate : place) {
        const auto word = words.next("-.0123456789");
        if (!word || words.line_end()) {
            return word.has_value();
        }
        damaged = damaged || word->size() > 99;
        coordinate = number(*word) / 1000;
    }
    const auto signs = words.next("+-0");
    if (!signs) {
        return false;
    }
    if (damaged || signs->size() > 3) {
        words.skip_line();
        return true;
    }
    for (std::size_t i = 0; i < signs->size(); ++i) {
        offsets[i] = (*signs)[i] == '0' ? 0.0 : (*signs)[i] == '+' ? -1.0 : 1.0;
    }
    points.emplace_back(static_cast<int>(points.size()) + 1, place[0], place[1], place[2],
                        place[0] + offsets[0], place[1] + offsets[1], place[2] + offsets[2]);
    return true;
}

// Nothing when the field makes its record a damaged one.
std::optional<int> perceval_value(const std::string& field) {
    std::string collected = field;
    if (field[0] == '+' || field[0] == '-') {
        const std::size_t zeros_end = std::min(field.find_first_not_of('0', 1), field.size());
        collected = only("-", field.substr(0, 1)) + field.substr(zeros_end);
    }
    const long long value = std::strtoll(collected.c_str(), nullptr, 10);
    if (collected.size() > 199 || value < INT32_MIN || value > INT32_MAX) {
        return std::nullopt;
    }
    return static_cast<int>(value);
}

} // namespace

std::vector<__PointMMT> metrolec_points(std::string text) {
    std::vector<__PointMMT> points;
    Words words(text.substr(0, text.find('\xFF')));
    while (add_metrolec_point(words, points)) {
    }
    return points;
}

std::vector<__PointMMT> perceval_points(std::string text) {
    const std::string of_number = "+-0123456789";
    std::erase(text, '\xFF');
    std::vector<__PointMMT> points;
    std::vector<double> v;
    for (std::size_t at = 0;;) {
        const std::size_t start = text.find_first_of(of_number, at);
        const std::size_t end = text.find_first_not_of(of_number, start);
        if (start == npos || end == npos) {
            return points;
        }
        const std::optional<int> value = perceval_value(text.substr(start, end - start));
        at = end + 1;
        if (value) {
            v.push_back(*value);
        }
        if (value && v.size() < 6) {
            continue;
        }
        const std::size_t line_end = text.find_first_of("\r\n", value ? at : end);
        if (line_end == npos) {
            return points;
        }
        if (value) {
            const int count = static_cast<int>(points.size());
            points.emplace_back(count, v[0], v[1], v[2], v[3], v[4], v[5]);
        }
        v.clear();
        at = line_end + 1;
    }
}
