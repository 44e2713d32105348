#include "platform/registry/application.h"

#include <atomic>
#include <filesystem>

namespace {

std::atomic<CWinApp*> current_application = nullptr;

} // namespace

std::string tarnel::executable_name() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).filename().string();
}

CWinApp::CWinApp() : m_pszProfileName(nullptr), executable_(tarnel::executable_name()) {
    m_pszProfileName = executable_.c_str();
    current_application = this;
}

CWinApp::~CWinApp() {
    CWinApp* self = this;
    current_application.compare_exchange_strong(self, nullptr);
}

void CWinApp::SetRegistryKey(LPCSTR company) {
    registry_key_ = company ? company : "";
}

HKEY CWinApp::GetSectionKey(LPCSTR section) {
    if (registry_key_.empty() || !m_pszProfileName || !*m_pszProfileName || !section) {
        return nullptr;
    }
    const std::string path =
        "Software\\" + registry_key_ + '\\' + m_pszProfileName + '\\' + section;
    HKEY key = nullptr;
    // Leaves null on failure.
    RegCreateKeyExA(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                    KEY_READ | KEY_WRITE, nullptr, &key, nullptr);
    return key;
}

CWinApp* AfxGetApp() {
    return current_application;
}
