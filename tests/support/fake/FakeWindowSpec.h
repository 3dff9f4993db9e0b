#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/Rect.h"
#include "platform/WindowDescription.h"

namespace gf::test {

// A window of the fake desktop, as a test describes it. gcc 12 warns about
// designated initializers that leave members out, hence the chainable helpers:
//   desktop.addWindow(FakeWindowSpec::at({0, 0, 400, 300}, 7).withIdentifier("org.example"));
struct FakeWindowSpec {
    std::int32_t pid = 1000;
    Rect frame;  // outer frame, global top-left coordinates
    int layer = WindowLayer::normal;
    std::optional<std::string> identifier;  // the owning application's identifier
    bool sizeSettable = true;
    bool hasHandle = true;    // listed among its process's manipulable windows
    bool numberKnown = true;  // its handle can tell its window number
    bool boundsKnown = true;  // the window server reports its bounds

    static FakeWindowSpec at(Rect frame, std::int32_t pid = 1000) {
        FakeWindowSpec spec;
        spec.frame = frame;
        spec.pid = pid;
        return spec;
    }
    FakeWindowSpec& withLayer(int value) { return set(&FakeWindowSpec::layer, value); }
    FakeWindowSpec& withIdentifier(std::string value) {
        identifier = std::move(value);
        return *this;
    }
    FakeWindowSpec& withFixedSize() { return set(&FakeWindowSpec::sizeSettable, false); }
    FakeWindowSpec& withoutHandle() { return set(&FakeWindowSpec::hasHandle, false); }
    FakeWindowSpec& withUnknownNumber() { return set(&FakeWindowSpec::numberKnown, false); }
    FakeWindowSpec& withUnknownBounds() { return set(&FakeWindowSpec::boundsKnown, false); }

  private:
    template <typename T>
    FakeWindowSpec& set(T FakeWindowSpec::*member, T value) {
        this->*member = value;
        return *this;
    }
};

}  // namespace gf::test
