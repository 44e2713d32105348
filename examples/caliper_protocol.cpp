// A protocol of one's own, as a plug-in: a caliper that sends "12.345 mm" and a line end. Loading
// this library enters "CALIPER" in the list of protocols, unloading it takes it out again.

#include "protocols/ProtocolRegister.h"
#include "protocols/SerialProtocol.h"

#include <charconv>
#include <string>
#include <string_view>

class CaliperProtocol final : public CMMProtocolRS232 {
    DECLARE_DYNCREATE(CaliperProtocol)

    CaliperProtocol() = default;

    ~CaliperProtocol() override {
        CMMProtocolRS232::Disconnect(); // before the reader meets half an object
    }

    /// Takes lines out of the ring until one holds a measurement. What is no measurement is
    /// dropped.
    int ExtractPoint(__PointMMT& point) override {
        while (has_line()) {
            if (read_measurement(take_line(), point.x)) {
                point.number = ++number_;
                return MEASURED_POINT;
            }
            ++m_Parse.damaged_records;
        }
        return 0;
    }

  private:
    bool has_line() {
        const auto [held, rest] = ring().runs();
        return held.find('\r') != held.npos || rest.find('\r') != rest.npos;
    }

    std::string take_line() {
        std::string line;
        for (char c = ring().Get(); c != '\r'; c = ring().Get()) {
            line += c;
        }
        return line;
    }

    static bool read_measurement(std::string_view line, double& millimetres) {
        const char* const end = line.data() + line.size();
        const auto [stop, error] = std::from_chars(line.data(), end, millimetres);
        return error == std::errc() && std::string_view(stop, end) == " mm";
    }

    int number_ = 0;
};

IMPLEMENT_DYNCREATE(CaliperProtocol, CMMProtocolRS232)

namespace {

ProtocolRegister registration("CALIPER", RUNTIME_CLASS(CaliperProtocol));

} // namespace
