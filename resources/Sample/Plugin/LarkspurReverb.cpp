#include "LarkspurReverb.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <new>
#include <vector>

namespace {

// Mutually prime lengths at 48 kHz, so that the echoes of the lines do not fall together.
constexpr std::array<int, 4> kLengths{1557, 1933, 2423, 2903};

class DelayLine {
public:
    DelayLine(int length, double sampleRate)
        : m_sampleRate(sampleRate),
          m_buffer(static_cast<size_t>(std::lround(length * sampleRate / 48000.0)) + 1, 0.0F) {}

    float read() const { return m_buffer[m_position]; }

    void write(float value) {
        m_lowPass += (value - m_lowPass) * m_brightness;
        m_buffer[m_position] = m_lowPass * m_feedback;
        m_position = (m_position + 1) % m_buffer.size();
    }

    void set(double decaySeconds, double damping) {
        const double delay = static_cast<double>(m_buffer.size()) / m_sampleRate;
        m_feedback = static_cast<float>(std::pow(10.0, -3.0 * delay / decaySeconds));
        m_brightness = static_cast<float>(1.0 - 0.9 * damping);
    }

private:
    double m_sampleRate;
    std::vector<float> m_buffer;
    size_t m_position = 0;
    float m_lowPass = 0.0F;
    float m_feedback = 0.0F;
    float m_brightness = 1.0F;
};

}  // namespace

struct LarkspurReverb {
    explicit LarkspurReverb(double rate)
        : lines{DelayLine{kLengths[0], rate}, DelayLine{kLengths[1], rate}, DelayLine{kLengths[2], rate},
                DelayLine{kLengths[3], rate}} {}

    std::array<DelayLine, 4> lines;
    float mix = 0.3F;
};

const char* larkspur_reverb_version() { return LARKSPUR_VERSION; }

LarkspurReverb* larkspur_reverb_create(double sample_rate) {
    if (!(sample_rate >= 8000.0 && sample_rate <= 384000.0)) {
        return nullptr;
    }
    try {
        auto reverb = std::make_unique<LarkspurReverb>(sample_rate);
        larkspur_reverb_set(reverb.get(), {.decay_seconds = 2.4, .damping = 0.35, .mix = 0.3});
        return reverb.release();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void larkspur_reverb_destroy(LarkspurReverb* reverb) { delete reverb; }

void larkspur_reverb_set(LarkspurReverb* reverb, LarkspurSettings settings) {
    for (DelayLine& line : reverb->lines) {
        line.set(std::clamp(settings.decay_seconds, 0.1, 20.0), std::clamp(settings.damping, 0.0, 1.0));
    }
    reverb->mix = static_cast<float>(std::clamp(settings.mix, 0.0, 1.0));
}

void larkspur_reverb_process(LarkspurReverb* reverb, float* left, float* right, size_t frames) {
    auto& lines = reverb->lines;
    for (size_t i = 0; i < frames; ++i) {
        const float a = lines[0].read();
        const float b = lines[1].read();
        const float c = lines[2].read();
        const float d = lines[3].read();
        // Half of each sum and difference: the mixing itself neither adds nor takes energy.
        lines[0].write(left[i] + 0.5F * (a + b + c + d));
        lines[1].write(right[i] + 0.5F * (a - b + c - d));
        lines[2].write(left[i] + 0.5F * (a + b - c - d));
        lines[3].write(right[i] + 0.5F * (a - b - c + d));
        left[i] += reverb->mix * (a + c - left[i]);
        right[i] += reverb->mix * (b + d - right[i]);
    }
}
