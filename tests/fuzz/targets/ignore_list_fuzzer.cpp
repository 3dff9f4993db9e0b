// Decodes arbitrary bytes as the stored ignore list.
#include <cstddef>
#include <cstdint>

#include "FuzzCheck.h"
#include "model/IgnoreListCoding.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using gf::fuzz::check;
    const QByteArray json(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    QString error;
    const auto entries = gf::IgnoreListCoding::decode(json, &error);
    if (!entries) {
        check(!error.isEmpty(), "a rejected list says why");
        return 0;
    }
    const auto again = gf::IgnoreListCoding::decode(gf::IgnoreListCoding::encode(*entries));
    check(again.has_value() && *again == *entries, "an encoded list decodes to itself, in order");
    return 0;
}
