#include "desktop/TextFiles.h"

#include "platform/files/file.h"
#include "platform/threads/clock.h"

#include <string_view>

namespace {

constexpr DWORD pause_ms = 10;

bool is_there(LPCSTR path) {
    CFileStatus status;
    return CFile::GetStatus(path, status) != FALSE;
}

bool can_be_read(LPCSTR path) {
    CFile file;
    return file.Open(path, CFile::modeRead | CFile::shareDenyWrite) != FALSE;
}

} // namespace

INT_PTR SplitLine(LPCSTR text, CStringArray& fields, char separator) {
    fields.RemoveAll();
    std::string_view rest = text;
    for (std::size_t end = 0; (end = rest.find(separator)) != rest.npos;) {
        fields.Add({rest.data(), static_cast<int>(end)});
        rest.remove_prefix(end + 1);
    }
    fields.Add({rest.data(), static_cast<int>(rest.size())});
    return fields.GetSize();
}

int WaitForFile(LPCSTR path, DWORD timeout_ms) {
    const DWORD start = GetTickCount();
    while (!is_there(path)) {
        Sleep(pause_ms);
        if (GetTickCount() - start > timeout_ms) {
            return 0;
        }
    }
    for (;;) {
        Sleep(pause_ms);
        if (can_be_read(path)) {
            return 1;
        }
        if (GetTickCount() - start >= timeout_ms) {
            return 0;
        }
    }
}
