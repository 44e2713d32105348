// Changes INI files of any bytes: what was written is read, what was deleted is gone, and all that
// was not changed is still there.

#include "platform/registry/ini_index.h"

#include <cstdlib>

using tarnel::IniDocument;
using tarnel::IniIndex;

namespace {

void expect(bool condition) {
    if (!condition) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string before(reinterpret_cast<const char*>(data), size);
    IniDocument document(before);
    expect(document.bytes() == before);
    document.set("S", "K", "v");
    expect(IniIndex(document.bytes()).value("s", "k") == "v");
    const IniIndex old(before);
    if (const auto value = old.value("s", "k")) { // put back, but for blanks
        document.set("s", "k", *value);
        expect(IniIndex(document.bytes()).sections().size() == old.sections().size());
    }
    expect(document.remove_key("s", "k") && !document.remove_key("s", "k"));
    expect(document.remove_section("s") && !document.remove_section("s"));
    return 0;
}
