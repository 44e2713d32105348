#pragma once

#include "protocols/ParseState.h"
#include "protocols/PointObserver.h"
#include "protocols/Protocol.h"
#include "serial/ComDevice.h"
#include "serial/RingBuffer.h"

class CMMProtocolRS232;

/// The serial device of a protocol: what is received goes into a ring, and the protocol takes its
/// points from there. All of that happens on the reader thread, under the protocol's lock.
class TARNEL_API CMMTComDev : public CComDevice {
  public:
    CMMTComDev();
    ~CMMTComDev() override;

    /// The protocol that gets what is received; without one it is dropped.
    void SetParent(CMMProtocolRS232* parent) { m_pParent = parent; }

    int OnReadCommBlock() override;

  private:
    friend CMMProtocolRS232;

    /// A ring that has the protocol take what is complete when it is full.
    class Ring : public ERCirBuf {
      public:
        explicit Ring(CMMTComDev& device) : device_(device) {}

        void OnDebord() override;

      private:
        CMMTComDev& device_;
    };

    void HandOver(std::span<const char> bytes, bool broken);
    void Receive(std::span<const char> bytes);
    void TakePoints();
    bool TakeSomePoints();
    void DropRecord();

    std::atomic<CMMProtocolRS232*> m_pParent = nullptr;
    Ring m_Ring{*this};
    bool m_bSkipping = false;    ///< up to the next line end
    tarnel::ReadTime m_ReadTime; ///< of the block that is being parsed, while it is observed
};

/// The base of the protocols that listen to one serial line: the machine sends its points as text
/// records, a subclass takes them apart. Where bytes are missing or damaged (the line was pulled,
/// or has reported an error) the record around that place is dropped, so that no point is made of
/// two halves.
class TARNEL_API CMMProtocolRS232 : public _CMMProtocol {
    DECLARE_DYNAMIC(CMMProtocolRS232)

    CMMProtocolRS232();
    ~CMMProtocolRS232() override;

    /// Also begins the parsing and the numbering anew, and lets the device receive.
    void Initialize(CWnd* client) override;

    /// Reads the port's configuration, and opens the port if it says so.
    void ReadFromRegistry(HKEY key) override;
    void WriteToRegistry(HKEY key) override;

    /// Opens the port; on failure a message box says so, and the result is 0.
    int Connect() override;
    int Disconnect() override;
    int IsConnected() override;
    CString GetInfoString() override;

    /// Opens the settings dialog; an open port is opened anew after OK. 0 when such a dialog is
    /// open already, for whichever protocol; else 1.
    int EditProtocolParameters() override;

    /// Takes the next point out of the ring: MEASURED_POINT or TRACK_POINT with `point` filled, any
    /// other value when no further complete point is there now. Called with a fresh point, on the
    /// reader thread, under `m_Lock`; it must not block.
    virtual int ExtractPoint(__PointMMT& point) = 0;

    /// Takes up to 100 points, stores and announces them. On the reader thread, under `m_Lock`.
    void OnReceiveChar();

    /// Empties the field that is being collected.
    void resetString() { m_Parse.clear_line(); }

    /// Has each point told to `observer`, from the next block on; null for none. It outlives the
    /// connection.
    void SetPointObserver(tarnel::PointObserver* observer);

    /// How many records have been dropped because they were damaged, since the object was made:
    /// by the machine, on the line, or because nobody took them in time. Under `m_Lock`.
    std::uint64_t GetDamagedRecords() const { return m_Parse.damaged_records; }

    CMMTComDev m_Device;

  protected:
    ERCirBuf& ring() { return m_Device.m_Ring; }

    tarnel::ParseState m_Parse; ///< under m_Lock

  private:
    friend CMMTComDev;

    void Store(const __PointMMT& point, int type);

    tarnel::PointObserver* m_pObserver = nullptr; ///< under m_Lock
};
