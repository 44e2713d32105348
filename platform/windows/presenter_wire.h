#pragma once

// What the layer and the program that shows its dialogs, tarnel-presenter, say to each other.
//
// The program is started with its control line as standard input. It answers `ready` and its
// process number, or `no_display`. From then on each letter that it gets there is a question
// whether it is still awake, answered by `awake`; a letter that comes with a descriptor is a new
// line, for the dialogs of one thread. The program ends when the one who started it does.
//
// On a thread's line each side writes JSON objects, one a text line. Windows are numbers, 0 is
// none; places and sizes are pixels. To the program:
//
//   {"do":"open"|"update", "seen":N, "window":W, "owner":W, "caption":T, "width":N, "height":N,
//    "visible":B, "enabled":B, "focus":W, "default":ID, "controls":[
//     {"window":W, "id":ID, "kind":"button"|"check"|"group"|"label"|"edit"|"list"|"progress"|
//      "arrows"|"", "text":T, "x":N, "y":N, "width":N, "height":N, "visible":B, "enabled":B,
//      "stop":B, "check":N, "items":[T...], "selection":N, "minimum":N, "maximum":N,
//      "position":N, "from":BYTES, "to":BYTES}...]}
//   {"do":"ask", "window":W, "owner":W, "caption":T, "text":T, "type":MB_}
//   {"do":"close", "window":W}
//
// And back, numbered from 1:
//
//   {"do":VERB, "n":N, "window":W, "value":N, "text":T}
//
//   click | choose (value: position) | type (text) | step (value: steps) | focus | close |
//   press (value: VK_, of a dialog) | answer (value: ID of the button) | shown (for the first time)
//
// "seen" is the number of the last action that the state which is sent has taken in, so that a
// person who goes on typing is not set back to what they typed before.

namespace tarnel::wire {

constexpr char ready[] = "ready ";
constexpr char no_display[] = "no display";
constexpr char awake[] = "awake";

constexpr char ask_awake = '?';
constexpr char new_line = '+';

} // namespace tarnel::wire
