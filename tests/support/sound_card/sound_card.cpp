#include "tests/support/sound_card/sound_card.h"

#include <stdlib.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace support {
namespace {

std::filesystem::path make_folder() {
    std::string pattern = std::filesystem::temp_directory_path() / "sound-XXXXXX";
    return ::mkdtemp(pattern.data());
}

} // namespace

SoundCard::SoundCard(unsigned rate) : folder_(make_folder()) {
    const std::filesystem::path settings = folder_ / "asound.conf";
    std::ofstream file(settings);
    file << "pcm_type.tarnel_test.lib \"" TARNEL_SOUND_CARD "\"\n"
         << "pcm.default { type tarnel_test rate " << rate << " folder " << folder_ << " }\n";
    file.close();
    environment_.set("ALSA_CONFIG_PATH", settings.string());
}

SoundCard::~SoundCard() {
    std::filesystem::remove_all(folder_);
}

std::vector<BYTE> SoundCard::heard() const {
    const std::string frames = read("heard");
    return {frames.begin(), frames.end()};
}

std::size_t SoundCard::open_streams() const {
    const std::string marks = read("streams");
    return static_cast<std::size_t>(std::ranges::count(marks, '+') -
                                    std::ranges::count(marks, '-'));
}

void SoundCard::set(const std::string& name, bool there) const {
    if (there) {
        std::ofstream(folder_ / name).flush();
    } else {
        std::filesystem::remove(folder_ / name);
    }
}

std::string SoundCard::read(const std::string& name) const {
    std::ifstream file(folder_ / name, std::ios::binary);
    return std::string(std::istreambuf_iterator(file), {});
}

} // namespace support
