#pragma once

namespace tarnel {

/// The order in which the library's static objects are built at loading; unloading destroys them
/// the other way round. Each object stands in the file of its class and takes its place with
/// TARNEL_LOAD_PLACE. Whatever is loaded must be complete before the entry point is called, so
/// its caller comes last. What is constant, like the layout of the encoder dialog, needs no place.
enum LoadPlace {
    load_locale_manager = 1000,
    load_metrolec_protocol,
    load_perceval_protocol,
    load_perceval_micron_protocol,
    load_protocol_message,
    load_track_point_message,
    load_enable_modeless_message,
    load_parameter_names,
    load_entry_point,
};

} // namespace tarnel

#define TARNEL_LOAD_PLACE(place) __attribute__((init_priority(tarnel::place)))
