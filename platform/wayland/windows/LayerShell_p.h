#pragma once

// An argument of the protocol is called as a keyword of this language.
#include <cstddef>
#include <cstdint>
#include <wayland-client.h>
#define namespace layerNamespace
#include <wlr-layer-shell-unstable-v1.h>
#undef namespace
