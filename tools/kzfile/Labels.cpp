#include "tools/kzfile/Labels.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "lib/KZFileManager/Metadata.h"
#include "tools/commandline/Streams.h"

namespace kzfile {

namespace {

constexpr std::array<const char*, 8> names{"none", "gray", "green", "purple", "blue", "yellow", "red", "orange"};

// One of the three parts, from 0 to 255: its distance from red on the circle of hues is 0, 1/3 or 2/3.
int part(const KZFileManager::FinderColor& color, double distance) {
    const double turned = color.hue - distance;
    const double away = std::abs(turned - std::round(turned)) * 6;  // 0 at the part's own hue, 3 opposite of it
    const double strength = std::clamp(2 - away, 0.0, 1.0);
    return static_cast<int>(std::lround(255 * color.brightness * (1 - color.saturation * (1 - strength))));
}

}  // namespace

std::optional<long> labelNamed(const std::string& text) {
    for (std::size_t label = 0; label < names.size(); ++label) {
        if (text == names.at(label) || text == std::to_string(label)) {
            return static_cast<long>(label);
        }
    }
    return std::nullopt;
}

std::string labelText(long label) {
    const auto color = KZFileManager::finderColorForColorIndex(label);
    if (!color) {
        return names[0];
    }
    return commandline::outputSwatch(part(*color, 0), part(*color, 1.0 / 3), part(*color, 2.0 / 3)) +
           names.at(static_cast<std::size_t>(label));
}

}  // namespace kzfile
