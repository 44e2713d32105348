#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarnel {

enum class IniKind {
    Blank,
    Comment, ///< begins with ";"
    Section, ///< "[name]"
    Entry,   ///< "name=value", outside all sections too
    Other,   ///< what means nothing
};

/// One line of an INI file, as parts of the file's text.
struct IniLine {
    IniKind kind = IniKind::Blank;
    std::string_view whole; ///< with its line end
    std::string_view name;  ///< of a section or entry, without the blanks around it
    std::string_view value; ///< of an entry, likewise; quotes are part of it
};

/// `text` without the spaces and tabs around it.
std::string_view without_blanks(std::string_view text);

/// Takes the first line of `text` away.
IniLine take_ini_line(std::string_view& text);

/// An INI file to read and change. What is not changed stays byte by byte as it is, with comments,
/// order, spelling and line ends. Names are compared without regard to the case of ASCII letters.
class IniDocument {
  public:
    /// The file's bytes: after the byte-order mark of UTF-16LE in that, else as they are.
    explicit IniDocument(std::string_view bytes);

    /// In UTF-8, without a byte-order mark.
    std::string_view text() const { return text_; }

    /// Writes `value` in the place of the old one, or at the end of the first section of that name,
    /// or in a new section at the end of the file.
    void set(std::string_view section, std::string_view key, std::string_view value);

    /// Removes the entries of that name from all sections of that name; whether there were any.
    bool remove_key(std::string_view section, std::string_view key);

    /// Removes the sections of that name, but not the comments behind their last entry, which
    /// belong to what follows; whether there were any.
    bool remove_section(std::string_view section);

    /// The file's bytes now.
    std::string bytes() const;

  private:
    std::size_t offset(std::string_view part) const {
        return static_cast<std::size_t>(part.data() - text_.data());
    }

    std::string_view line_end() const;
    void insert_line(std::size_t at, std::string line);
    bool replace(std::string&& text);

    std::string_view mark_; // at the start of the file, empty for none
    std::string text_;
    std::string rest_; // half a UTF-16 unit at the end of the file
};

} // namespace tarnel
