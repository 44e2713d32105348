#pragma once

namespace tarnel::encoder_controls {

constexpr int frame_box = 1000;
constexpr int prompt_text = 1019;
constexpr int encoder_prompt_text = 1020;
constexpr int do_all_button = 1030;
constexpr int set_home_button = 1031;

} // namespace tarnel::encoder_controls
