// What the program and its helper say to each other, in pieces of any length: nothing is made of nonsense, what is
// taken goes out again as the same bytes, and where the pieces are cut makes no difference.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/linux/rights/wire/Wire.h"

namespace {

namespace wire = platform::rights::wire;

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

// All that is taken from the bytes, encoded again.
struct Taken {
    std::string bytes;
    bool isDamaged = false;

    friend bool operator==(const Taken&, const Taken&) = default;
};

void takeAll(wire::Decoder& decoder, Taken& taken) {
    while (const auto message = decoder.next()) {
        const auto encoded = wire::encode(*message);
        require(encoded.has_value());
        taken.bytes += *encoded;
    }
    taken.isDamaged = decoder.isDamaged();
}

Taken takenAtOnce(const std::string& bytes) {
    Taken taken;
    wire::Decoder decoder;
    decoder.append(bytes);
    takeAll(decoder, taken);
    return taken;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    std::string all;
    Taken taken;
    wire::Decoder decoder;
    while (input.remaining_bytes() > 0) {
        const std::string piece = input.ConsumeRandomLengthString();
        all += piece;
        decoder.append(piece);
        takeAll(decoder, taken);
    }
    require(taken == takenAtOnce(all));
    require(all.starts_with(taken.bytes));
    return 0;
}
