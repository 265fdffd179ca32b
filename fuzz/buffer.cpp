// SPDX-License-Identifier: Apache-2.0
// A buffer behaves like a vector, also with its own bytes.
#include "property.h"
#include "targets.h"

#include <algorithm>

namespace sarn_fuzz {

namespace {

/// Does a random operation on both.
void step(Input& input, Buffer& buffer, Bytes& model) {
    const unsigned operation = input.take() % 5;
    const int number = static_cast<int>(input.take());
    const int used = buffer.getUsed();
    if (operation == 0) {
        const int position = used == 0 ? 0 : number % (used + 1);
        const Bytes bytes = sarn_test::makePattern(static_cast<int>(input.take()));
        buffer.insert(position, bytes.data(), static_cast<int>(bytes.size()));
        model.insert(model.begin() + position, bytes.begin(), bytes.end());
    } else if (operation == 1 && used > 0) {
        const int position = number % (used + 1);
        const int start = static_cast<int>(input.take()) % used;
        const int count = static_cast<int>(input.take()) % (used - start + 1);
        const Bytes bytes(model.begin() + start, model.begin() + start + count);
        buffer.insert(position, buffer.getData() + start, count);
        model.insert(model.begin() + position, bytes.begin(), bytes.end());
    } else if (operation == 2 && used > 0) {
        const int start = number % used;
        const int count = static_cast<int>(input.take()) % (used - start + 1);
        buffer.init(buffer.getData() + start, count);
        model = Bytes(model.begin() + start, model.begin() + start + count);
    } else if (operation == 3) {
        buffer.setUsed(std::min(number, used));
        model.resize(static_cast<std::size_t>(buffer.getUsed()));
    } else if (operation == 4) {
        buffer.ensureAllocated(number);
        require(buffer.getAllocated() >= number, "there is the room that was asked for");
    }
}

template <class Kind>
void check(Input input) {
    Kind buffer;
    Bytes model;
    while (!input.isEmpty() && model.size() < 20000) {
        step(input, buffer, model);
        require(toBytes(buffer) == model, "a buffer does what a vector does");
    }
    const Kind copy = buffer;
    require(toBytes(copy) == model, "a copy holds the same");
}

} // namespace

void fuzzBuffer(const std::uint8_t* data, std::size_t size) {
    check<Buffer>(Input(data, size));
    check<Key>(Input(data, size));
}

} // namespace sarn_fuzz
