#include "protocols/Protocol.h"

#include "core/resource_scope.h"
#include "platform/windows/cmd_ui.h"
#include "platform/windows/message_box.h"
#include "protocols/ProbeDialog.h"
#include "protocols/ProtocolMessages.h"
#include "protocols/ProtocolRegister.h"

#include <utility>

IMPLEMENT_DYNAMIC(_CMMProtocol, CObject)

namespace {

constexpr UINT probe_message = 12513;
constexpr LPCSTR built_in_probe_message = "Please select probe %1!d!.";
constexpr LONG preset_probe = 1;
constexpr LONG unknown_probe = -3;

} // namespace

_CMMProtocol::_CMMProtocol() {
    InitializeCriticalSection(&m_Lock);
}

_CMMProtocol::~_CMMProtocol() {
    DeleteCriticalSection(&m_Lock);
}

void _CMMProtocol::Initialize(CWnd* client) {
    const tarnel::SectionGuard guard(m_Lock);
    m_pClientWnd = client;
    m_bPointAcknowledged = 1;
}

LONG _CMMProtocol::SetAutoRepeatTick(LONG tick) {
    return std::exchange(m_AutoRepeatTick, tick);
}

CString _CMMProtocol::GetProtocolName() {
    for (const ProtocolRegister* node = ProtocolRegister::m_Root; node; node = node->next) {
        if (node->runtime_class == GetRuntimeClass()) {
            return node->name;
        }
    }
    return GetRuntimeClass()->m_lpszClassName;
}

// What the client is told.

HWND _CMMProtocol::GetClientHandle() const {
    return m_pClientWnd ? m_pClientWnd->GetSafeHwnd() : nullptr;
}

void _CMMProtocol::SendMessageToClient(TYPE type) {
    HWND client = nullptr;
    {
        const tarnel::SectionGuard guard(m_Lock);
        client = GetClientHandle();
    }
    if (!client) {
        return;
    }
    switch (type) {
    case TRACK_POINT:
        PostTrackPoint(client);
        break;
    case MEASURED_POINT:
        if (ClaimAnnouncement()) {
            PostMeasuredPoint(client);
        }
        break;
    default:
        PostMessageA(client, tarnel::protocol_message,
                     static_cast<WPARAM>(std::int64_t{static_cast<int>(type)}), 0);
    }
}

void _CMMProtocol::PostMeasuredPoint(HWND client) {
    if (!PostMessageA(client, tarnel::protocol_message, MEASURED_POINT, 0)) {
        m_bPointAcknowledged = 1; // the queue is full: the next point tries again
    }
}

void _CMMProtocol::PostTrackPoint(HWND client) {
    const UINT message = tarnel::track_point_message;
    MSG older;
    while (PeekMessageA(&older, client, message, message, PM_REMOVE) && older.message == message) {
    }
    PostMessageA(client, message, TRACK_POINT, 0);
}

_CMMProtocol::ContextMenuLocker::ContextMenuLocker(_CMMProtocol* protocol) : m_pProtocol(protocol) {
    m_pProtocol->m_bContextMenuLocked = 1;
    SendEnableModeless(0);
}

_CMMProtocol::ContextMenuLocker::~ContextMenuLocker() {
    m_pProtocol->m_bContextMenuLocked = 0;
    SendEnableModeless(1);
}

void _CMMProtocol::ContextMenuLocker::SendEnableModeless(int enable) {
    SendMessageA(m_pProtocol->m_pClientWnd->GetSafeHwnd(), tarnel::enable_modeless_message,
                 static_cast<WPARAM>(enable), 0);
}

// Probes.

int _CMMProtocol::OpenProbeDialogBox() {
    LONG id = GetProbeID();
    return OpenProbeSelectionDialogBox(id) ? SelectProbe(id) : 0;
}

int _CMMProtocol::OpenProbeSelectionDialogBox(LONG& id) {
    const CLocaleResourceScope users_language;
    tbxProbeSelectionDlg dialog(nullptr);
    dialog.m_nProbe = preset_probe;
    if (dialog.DoModal() != IDOK) {
        return 0;
    }
    id = dialog.m_nProbe;
    return 1;
}

int _CMMProtocol::SelectProbe(LONG id) {
    const CLocaleResourceScope users_language;
    CString format = built_in_probe_message;
    format.LoadString(probe_message);
    CString message;
    message.FormatMessage(format, id);
    AfxMessageBox(message, MB_OK | MB_ICONINFORMATION);
    return 1;
}

void _CMMProtocol::OutputSpeakerSound(unsigned int frequency, unsigned int duration, int flag) {
    m_Speaker.play_sound(static_cast<int>(frequency), static_cast<int>(duration),
                         flag ? WOD_PLAY_SOUND_REPLACEABLE : WOD_PLAY_SOUND_AUTO);
}

void _CMMProtocol::GetProbeInfo(short&, short& id, double& diameter, double&) {
    id = static_cast<short>(GetProbeID());
    diameter = GetProbeDiameter();
}

double _CMMProtocol::GetProbeDiameter() const {
    return 0.0;
}

LONG _CMMProtocol::GetProbeID() const {
    return unknown_probe;
}

int _CMMProtocol::GetCurrentProbeAngles(double* a, double* b) {
    *a = m_ProbeAngleA;
    *b = m_ProbeAngleB;
    return 1;
}

// What only some machines offer.

int _CMMProtocol::IsSecondPointProvided() {
    return 1;
}

void _CMMProtocol::OnStartTransaction() {}

void _CMMProtocol::OnStopTransaction() {}

void _CMMProtocol::OnPostConnection() {}

void _CMMProtocol::ReadFromRegistry(HKEY) {}

void _CMMProtocol::WriteToRegistry(HKEY) {}

void _CMMProtocol::Reset() {}

void _CMMProtocol::StartTracking() {}

void _CMMProtocol::EndTracking() {}

int _CMMProtocol::IsTrackingSupported() const {
    return 0;
}

int _CMMProtocol::CanHandleProbe() const {
    return 0;
}

int _CMMProtocol::IsRigidProbe() const {
    return 0;
}

int _CMMProtocol::SetPH9PH10ProbeAngle(double, double, double, int) {
    return 0;
}

int _CMMProtocol::ProtocolSupportProbeHeadCommands() {
    return 0;
}

int _CMMProtocol::GetRemoteMouseState() const {
    return 0;
}

void _CMMProtocol::ForceRemoteMouse(int, int) {}

int _CMMProtocol::RapidMoveTo(double, double, double) {
    return 0;
}

int _CMMProtocol::MeasureTo(double, double, double, double, double, double) {
    return 0;
}

int _CMMProtocol::OnAcceptIntermediatePoint(int) {
    return 0;
}

int _CMMProtocol::RepositioningAllowed() {
    return 1;
}

int _CMMProtocol::OnSetTargetCoordinates(double, double, double, double, double, double) {
    return 0;
}

void _CMMProtocol::OnUpdateSpecialFunction(CCmdUI* ui) {
    ui->Enable(FALSE);
}

void _CMMProtocol::SpecialFunction() {}
