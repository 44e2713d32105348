#include "protocols/ParameterNames.h"

#include "core/load_order.h"
#include "core/resource_scope.h"

#include <algorithm>

std::map<CString, CString> tbxCMMParamNamesConverter::m_names_map
    TARNEL_LOAD_PLACE(load_parameter_names);
constinit int tbxCMMParamNamesConverter::m_is_map_initialized = 0;

namespace {

struct Entry {
    LPCSTR std_name;
    UINT text;
};

constexpr Entry entries[] = {
    {"SNSET/APPRCH", 12547},
    {"SNSET/SEARCH", 12548},
    {"SNSET/RETRCT", 12549},
    {"SNSET/CLRSRF", 12550},
    {"SNSET/DEPTH", 12551},
    {"FLY/RADIUS", 12552},
    {"ScanPar.Retract", 12584},
    {"ScanPar.ChordalTol", 12579},
    {"ScanPar.Deflection", 12581},
    {"ScanPar.DeadZone", 12582},
    {"ScanPar.BlendDistance", 12583},
    {"UseProbingSafeDistance", 12564},
    {"ProbingSafeDistance", 12565},
    {"UseProbingDepth", 12566},
    {"ProbingDepth", 12567},
    {"FEDRAT/MESVEL", 12553},
    {"PtMeasPar.HeadSpeed", 12572},
    {"FEDRAT/POSVEL", 12554},
    {"GoToPar.HeadSpeed", 12569},
    {"FEDRAT/ROTVEL", 12557},
    {"ScanPar.Speed", 12575},
    {"ScanPar.KSpeed", 12576},
    {"ScanPar.HeadSpeed", 12585},
    {"FEDRAT/MESACC", 12555},
    {"PtMeasPar.HeadAccel", 12573},
    {"FEDRAT/POSACC", 12556},
    {"GoToPar.HeadAccel", 12570},
    {"ScanPar.Accel", 12577},
    {"ScanPar.KAccel", 12578},
    {"ScanPar.HeadAccel", 12586},
    {"PROBE/ENABLE", 12558},
    {"BACKOFF/ENABLE", 12559},
    {"FINEPOS/ENABLE", 12560},
    {"JOYSTICK/ENABLE", 12561},
    {"JOYSTICK/SENSITIVITY", 12562},
    {"AutoOrient", 12563},
    {"EntityLink", 12568},
    {"GoToPar.TipMoves", 12571},
    {"PtMeasPar.HeadTouch", 12574},
    {"ScanPar.Filter", 12580},
    {"MillingPar.SpindleSpeed", 12587},
    {"MillingPar.FeedRate", 12590},
};

} // namespace

tbxCMMParamNamesConverter&
tbxCMMParamNamesConverter::operator=(const tbxCMMParamNamesConverter&) = default;

CString tbxCMMParamNamesConverter::get_readable_name(const CString& std_name) {
    fill_at_first_use();
    const auto found = m_names_map.find(std_name);
    return found == m_names_map.end() ? CString() : found->second;
}

CString tbxCMMParamNamesConverter::get_std_name(const CString& readable_name) {
    fill_at_first_use();
    const auto same = [&](const auto& names) { return names.second == readable_name; };
    const auto found = std::ranges::find_if(m_names_map, same);
    return found == m_names_map.end() ? CString() : found->first;
}

void tbxCMMParamNamesConverter::fill_at_first_use() {
    if (!m_is_map_initialized) {
        init_map();
        m_is_map_initialized = 1;
    }
}

void tbxCMMParamNamesConverter::init_map() {
    const CLocaleResourceScope scope;
    for (const Entry& entry : entries) {
        CString text = entry.std_name; // stays when no module has the text
        text.LoadString(entry.text);
        m_names_map.emplace(entry.std_name, text);
    }
}
