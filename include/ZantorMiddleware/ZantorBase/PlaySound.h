// PlaySound: plays a sound held in memory, a RIFF/WAVE image such as a
// program keeps in its resources for alerts.
//
// Windows plays it with winmm's PlaySoundA (loaded on first use). Linux
// plays it through PulseAudio's simple API, loaded at run time from
// "libpulse-simple.so.0"; a machine without PulseAudio gets a status, not
// a crash.
//
// Ownership: the caller owns the image. A synchronous call reads it only
// during the call; an asynchronous call on Linux plays a private copy, and
// on Windows the image must stay valid while it plays.
// Thread safety: may be called from any thread. The library must not be
// unloaded while an asynchronous sound is still playing.
//
//   StatusCode status = PlaySoundA(alertWav, alertWavSize, true);
//   if (status != STATUS_CODE_SUCCESS) LogMessage(LOG_TYPE_WARNING, "no sound");
#pragma once

#include <ZantorMiddleware/ZantorBase/Export.h>
#include <ZantorMiddleware/ZantorBase/StatusCode.h>

namespace Zantor {

// Plays the sound image of size bytes at sound; with async the call returns
// once playing has started, otherwise when the sound has been played.
// Returns STATUS_CODE_SUCCESS when the sound was (or is being) played.
// Windows: passes the image to PlaySoundA with SND_MEMORY | SND_NOWAIT (and
// SND_ASYNC); size is not used; STATUS_CODE_FAILURE when PlaySoundA fails;
// when winmm.dll or its PlaySoundA cannot be found, the OS error's status
// (STATUS_CODE_FAILURE when it has none).
// Linux: the image is checked first, never reading past size: a RIFF/WAVE
// image with an uncompressed PCM "fmt " chunk (format 1, 8, 16, 24 or 32
// bits, 1 to 8 channels, 1000 to 384000 frames per second, block alignment
// = channels * bytes per sample) ahead of a "data" chunk, every chunk
// lying wholly inside the image (a trailing partial frame of the data is
// not played). STATUS_CODE_INVALID_PARAMETER when sound is null;
// STATUS_CODE_INVALID_FORMAT for any image that breaks these rules, an
// empty or truncated one included; STATUS_CODE_FAILURE when PulseAudio (the
// library or its server) is not available or playing fails;
// STATUS_CODE_HEAP_EMPTY when the copy for asynchronous play cannot be
// made. Asynchronous play copies the samples, connects to the server, and
// plays on a detached thread of its own; a later sound does not stop an
// earlier one.
ZANTOR_BASE_API StatusCode PlaySoundA(const void* sound, unsigned size, bool async);

} // namespace Zantor
