#include "platform/registry/application.h"

#include "platform/base/diagnostics.h"
#include "platform/base/exceptions.h"

#include <atomic>
#include <filesystem>
#include <memory>

namespace {

std::atomic<CWinApp*> current_application = nullptr;

LRESULT report_exception(const CException& exception) {
    tarnel::report(std::string("a ") + exception.GetRuntimeClass()->m_lpszClassName +
                   " has left a message handler");
    return 0;
}

} // namespace

LRESULT tarnel::answer_exception(CException* exception, const MSG& message) {
    const auto finish = [](CException* ended) { ended->Delete(); };
    const std::unique_ptr<CException, decltype(finish)> ending(exception, finish);
    CWinApp* const application = AfxGetApp();
    return application ? application->ProcessWndProcException(exception, &message)
                       : report_exception(*exception);
}

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

LRESULT CWinApp::ProcessWndProcException(CException* exception, const MSG*) {
    return report_exception(*exception);
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
