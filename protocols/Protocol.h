#pragma once

#include "core/export.h"
#include "desktop/ToneDevice.h"
#include "platform/base/string.h"
#include "platform/registry/registry.h"
#include "platform/threads/critical_section.h"
#include "platform/windows/wnd.h"
#include "protocols/Point.h"

#include <atomic>

class CCmdUI;

/// The base of all measuring-machine protocols. The application creates one by its name
/// (ProtocolRegister), gives it a client window with Initialize, connects it, and is told of each
/// new point by a message to that window. The point itself is read from the protocol and then
/// acknowledged, in one hold of `m_Lock`, so that none slips in between. Until then further points
/// are stored but not announced.
///
/// | Message                     | wParam | What has happened                             |
/// |-----------------------------|--------|-----------------------------------------------|
/// | "CMMProtocolMessage"        | 2      | posted: `m_LastPoint` is new                  |
/// | "CMMProtocolMessage"        | other  | posted: an event of the protocol's own        |
/// | "CMMProtocolTrackPoint"     | 1      | posted: `m_TrackPoint` is new; one is pending |
/// | "CMMProtocolEnableModeless" | 0, 1   | sent: disable context menus, enable them      |
///
/// The messages come from whatever thread produces the points; all other calls belong to the
/// application's thread. What a machine does not offer answers 0 here. A concrete class disconnects
/// in its own destructor, so that no thread meets half an object.
class TARNEL_API _CMMProtocol : public CObject {
    DECLARE_DYNAMIC(_CMMProtocol)

    /// What a message is about; other values are events of the protocol's own.
    enum TYPE : int { TRACK_POINT = 1, MEASURED_POINT = 2 };

    /// Keeps the client's context menus and modeless dialogs disabled while it lives. Guards do not
    /// count: the first that ends enables them. Not on a thread that the client window's thread
    /// waits for.
    class TARNEL_API ContextMenuLocker {
      public:
        explicit ContextMenuLocker(_CMMProtocol* protocol);
        ~ContextMenuLocker();
        ContextMenuLocker(const ContextMenuLocker&) = delete;
        ContextMenuLocker& operator=(const ContextMenuLocker&) = default;

      private:
        void SendEnableModeless(int enable);

        _CMMProtocol* m_pProtocol;
    };

    _CMMProtocol();
    ~_CMMProtocol() override;

    /// Whether points come with a second point.
    virtual int IsSecondPointProvided();

    virtual void OnStartTransaction();
    virtual void OnStopTransaction();

    /// Called by Connect after a successful connection, under `m_Lock`.
    virtual void OnPostConnection();

    /// Sets the window that is told, which outlives the connection; the last point counts as
    /// acknowledged.
    virtual void Initialize(CWnd* client);

    /// Reads and stores the protocol's settings in a key of the caller's.
    virtual void ReadFromRegistry(HKEY key);
    virtual void WriteToRegistry(HKEY key);

    /// Nonzero on success.
    virtual int Connect() = 0;
    virtual int Disconnect() = 0;
    virtual int IsConnected() = 0;

    /// The protocol and its link in one line.
    virtual CString GetInfoString() = 0;

    /// The name that the class is registered by, else the name of the class.
    virtual CString GetProtocolName();

    virtual void Reset();
    virtual int EditProtocolParameters() = 0;
    virtual void StartTracking();
    virtual void EndTracking();
    virtual int IsTrackingSupported() const;

    /// Plays a tone of `frequency` hertz and `duration` milliseconds without waiting. With `flag`
    /// nonzero the next such tone replaces it; else it is one of a sequence.
    virtual void OutputSpeakerSound(unsigned int frequency, unsigned int duration, int flag);

    virtual int CanHandleProbe() const;
    virtual int IsRigidProbe() const;

    /// The probe's number and its diameter in millimetres; the others stay as they are.
    virtual void GetProbeInfo(short& a, short& id, double& diameter, double& b);
    virtual double GetProbeDiameter() const;
    virtual LONG GetProbeID() const;

    /// Asks the person for a probe and selects it; 0 when cancelled.
    virtual int OpenProbeDialogBox();

    /// Asks for the number of a probe: 1, and `id` is the number entered; 0 when cancelled.
    virtual int OpenProbeSelectionDialogBox(LONG& id);

    /// Tells the person to select the probe; 1.
    virtual int SelectProbe(LONG id);

    virtual int SetPH9PH10ProbeAngle(double a, double b, double c, int d);
    virtual int ProtocolSupportProbeHeadCommands();
    virtual int GetCurrentProbeAngles(double* a, double* b);
    virtual int GetRemoteMouseState() const;
    virtual void ForceRemoteMouse(int a, int b);

    // Motion, in millimetres; nonzero when the machine has accepted the command.

    virtual int RapidMoveTo(double x, double y, double z);
    virtual int MeasureTo(double x, double y, double z, double x2, double y2, double z2);
    virtual int OnAcceptIntermediatePoint(int accept);
    virtual int RepositioningAllowed();
    virtual int OnSetTargetCoordinates(double x, double y, double z, double x2, double y2,
                                       double z2);
    virtual void OnUpdateSpecialFunction(CCmdUI* ui);
    virtual void SpecialFunction();

    /// The client has read the last measured point; the next one is announced.
    void AcknowledgeLastPoint() { m_bPointAcknowledged = 1; }

    // A value of the client's own.

    LONG GetAutoRepeatTick() const { return m_AutoRepeatTick; }

    /// The value before.
    LONG SetAutoRepeatTick(LONG tick);

    /// Posts a message about `type` to the client window, if there is one. Any thread. A measured
    /// point is announced only when the one before has been acknowledged; a tracking point replaces
    /// one that is still pending.
    void SendMessageToClient(TYPE type);

    int WantsContextMenuLocked() { return m_bContextMenuLocked; }

    __PointMMT m_LastPoint;  ///< under m_Lock
    __PointMMT m_TrackPoint; ///< under m_Lock
    double m_ProbeAngleA = 0.0;
    double m_ProbeAngleB = 0.0;
    CWnd* m_pClientWnd = nullptr; ///< changed under m_Lock
    std::atomic<int> m_bPointAcknowledged = 1;
    CRITICAL_SECTION m_Lock;
    LONG m_AutoRepeatTick = 0;
    int m_bContextMenuLocked = 0;
    CWaveOutDevice m_Speaker;

  protected:
    /// The handle of the client window, or null. Under m_Lock.
    HWND GetClientHandle() const;

    /// Whether a measured point is to be announced now; it counts as announced then.
    bool ClaimAnnouncement() { return m_bPointAcknowledged.exchange(0) != 0; }

    void PostMeasuredPoint(HWND client);
    static void PostTrackPoint(HWND client);
};
