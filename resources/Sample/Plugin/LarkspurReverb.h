// The sample plug-in's sound: a stereo reverb of four delay lines that feed one another. Plain C entry points, so that
// any host loads it with nothing but a symbol look-up. It speaks no plug-in format.
#pragma once

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

#define LARKSPUR_EXPORT __attribute__((visibility("default")))

typedef struct LarkspurReverb LarkspurReverb;

LARKSPUR_EXPORT const char* larkspur_reverb_version(void);

// Null when the rate is not between 8000 and 384000 Hz or memory is short. The caller destroys it.
LARKSPUR_EXPORT LarkspurReverb* larkspur_reverb_create(double sample_rate);
LARKSPUR_EXPORT void larkspur_reverb_destroy(LarkspurReverb* reverb);

// Values outside their range are clamped.
typedef struct LarkspurSettings {
    double decay_seconds;  // until the tail has fallen by 60 dB, 0.1 to 20
    double damping;        // 0 to 1: how much sooner the high notes die away
    double mix;            // 0 to 1: how much of the room is in the sound
} LarkspurSettings;

LARKSPUR_EXPORT void larkspur_reverb_set(LarkspurReverb* reverb, LarkspurSettings settings);

// Adds the room to `frames` frames of both channels, in place. Allocates nothing and takes no lock.
LARKSPUR_EXPORT void larkspur_reverb_process(LarkspurReverb* reverb, float* left, float* right, size_t frames);

#ifdef __cplusplus
}
#endif
