#pragma once

#include "core/export.h"
#include "platform/base/string.h"

#include <map>

/// The names of a measuring machine's parameters: the standard ones, as programs write them
/// ("FEDRAT/MESVEL"), and those that people read, in the user's language ("Measure speed"). Both
/// compare exactly. The first call reads the texts; no other may be under way then. They stay in
/// the language that was current.
class TARNEL_API tbxCMMParamNamesConverter {
  public:
    /// Has nothing to copy.
    tbxCMMParamNamesConverter& operator=(const tbxCMMParamNamesConverter&);

    /// "" for a name that is none.
    static CString get_readable_name(const CString& std_name);

    /// "" for a name that is none. Of several that read the same, the first in the order of bytes.
    static CString get_std_name(const CString& readable_name);

    static std::map<CString, CString> m_names_map; ///< standard to readable names
    static int m_is_map_initialized;               ///< nonzero once the map is filled

  private:
    static void fill_at_first_use();
    static void init_map();
};
