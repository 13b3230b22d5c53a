/* Screen mirroring: all that a host needs. Plain C.
 *
 * The library mirrors what one display shows onto networked light devices. Hand it a configuration,
 * start it, stop it:
 *
 *     #include "mirror/mirrorInterface.h"
 *     #include <unistd.h>
 *
 *     int main(void) {
 *         char config[] = "{\"displayID\": 1, \"mode\": 0, \"devices\": [{"
 *                         "\"ip\": \"192.0.2.7\", \"controlVersion\": 2, \"shapeType\": 0,"
 *                         "\"scaleFactor\": 1.5, \"panels\": ["
 *                         "{\"panelID\": 101, \"centroidX\": 640, \"centroidY\": 360}]}]}";
 *         if (setMirrorConfig(config) != 1 || startMirror() != 1)
 *             return 1;
 *         sleep(60);
 *         return stopMirror() == 1 ? 0 : 1;
 *     }
 *
 * CONVENTIONS
 *
 * 1. One manager. There is one mirror a process; the functions below are its only entrance. It
 *    exists from the moment the library is loaded until it is unloaded, and unloading stops a
 *    running mirror first.
 * 2. Threads. Call the functions from one thread at a time; the library does not serialise them.
 *    Mirroring runs on a thread of its own, frames arrive on another, and neither calls the host.
 * 3. Text. All texts are UTF-8 JSON in buffers that the host owns. Texts handed in are read up to
 *    their terminating zero and neither changed nor kept. Texts handed out are bounded copies: a
 *    text that fills its bound arrives WITHOUT a terminating zero, a shorter one is padded with
 *    zeros up to the bound.
 * 4. Failure. No exception leaves the library and errno is not used. Each function answers the
 *    values listed with it; one line on standard output says what went wrong. Exception to the
 *    rule: a configuration document that is valid JSON but lacks a member, or has one of the wrong
 *    type, stops the process by assertion. Check documents that you did not write yourself.
 * 5. Signals. Starting a run installs handlers for SIGINT, SIGABRT, SIGTERM, SIGBUS, SIGFPE,
 *    SIGPIPE and SIGSEGV which end the run and exit the process with the signal's number. They
 *    stay installed after the run. A host that wants its own installs them after startMirror().
 * 6. Units. Positions and sizes are pixels of the mirrored display, x to the right, y downwards.
 * 7. What stays. The lights keep their last colour when mirroring stops; the host decides what they
 *    show afterwards.
 *
 * THE CONFIGURATION DOCUMENT
 *
 *     displayID   integer   which display, as getDisplays() lists it
 *     mode        integer   0 match: each panel takes the colour of the screen behind it
 *                           1 melt: all take the dominant colour, each at its own pace
 *                           2 fade: all take the dominant colour together
 *                           3 palette: panels take random colours of the screen's palette
 *     devices     array of
 *       ip              string    IPv4 or IPv6 address
 *       controlVersion  integer   1: narrow datagrams to port 60221; else wide ones to port 60222
 *       shapeType       integer   0: panels of base size 150 pixels, else 100
 *       scaleFactor     number    size of the panels relative to the base size
 *       panels          array of
 *         panelID           integer
 *         centroidX         integer   the panel's centre on the screen
 *         centroidY         integer
 *
 * Every member is required; integers fit 32 bits, signed; other members are ignored.
 */
#ifndef MIRROR_INTERFACE_H
#define MIRROR_INTERFACE_H

#ifdef __cplusplus
extern "C" {
#endif

/* Lists the active displays, at most 10, in the system's order:
 *     {"numDisplays":1,"displays":[{"displayID":1,"width":2880,"height":1800}]}
 * buffer        receives at most bufferLength bytes; a longer text arrives cut and unterminated
 * bufferLength  its size in bytes, positive; with 0 nothing is written
 * Returns 1, or -1 when the text could not be made (the buffer is then untouched).
 */
int getDisplays(char *buffer, int bufferLength);

/* Makes the text that getStreamFrameJson() hands out from the frames captured last:
 *     {"numDevices":1,"devices":[{"ip":"192.0.2.7","animData":"1 101 1 255 0 0 0 5"}]}
 * animData: the panel count, then for each panel its identifier, 1, red, green, blue, white, 5.
 * Returns the text's length in bytes without a terminating zero, 0 when nothing was captured, -1
 * on failure.
 */
int getSizeOfStreamFrameJson(void);

/* Copies the text of the last getSizeOfStreamFrameJson().
 * buffer  receives exactly as many bytes as the last successful size call returned, and no
 *         terminating zero
 * Returns 0, or -1 on failure.
 */
int getStreamFrameJson(char *buffer);

/* Asks the running mirror to keep a copy of the next frame that it sends, and waits for it for
 * about a second. Modes that send only when the screen's colour changes answer at the next change.
 * Returns 0 when the frame was captured, -1 when the wait ran out (nothing running among the
 * reasons).
 */
int captureCurrentStreamFrames(void);

/* Writes the palette of the colours on the screen now, most frequent hue first:
 *     {"palette":[{"R":12,"G":200,"B":31},{"R":0,"G":0,"B":0}]}
 * buffer  at least 512 bytes, all of which are written; a text of 512 bytes or more arrives cut and
 *         unterminated
 * Returns 0, or -1 on failure (the buffer is then untouched).
 */
int getPalette(char *buffer);

/* Applies a configuration document (above). Ends a running mirror first and never starts one.
 * json  the document, zero-terminated
 * Returns 1 when it was applied. 0 when not: the text is not JSON ("Bad json!" is printed, nothing
 * has changed), the display may not be captured or is not there ("Screen Recording not allowed!":
 * the display and frame buffer are replaced, devices and mode are as before), or memory ran out
 * ("Bad config!").
 */
int setMirrorConfig(char *json);

/* Starts mirroring. Returns once the run has begun.
 * Returns 1 when it was started; 0 when a run exists that has not been stopped ("Mirroring already
 * running."), or no device is configured ("No devices."); -1 when no thread could be made ("Error
 * starting mirroring"). A run that ends by itself ("Stream start failed!", "Error during
 * runMirror", an unknown mode) still has to be stopped.
 * After a run the configuration must be applied again, or the screen reads as black.
 */
int startMirror(void);

/* Stops mirroring: waits for the frame in hand to be sent and for the mode's delay, a fraction of a
 * second.
 * Returns 1 when the run was stopped or none existed, -1 when its thread could not be joined
 * ("Error stopping mirror").
 */
int stopMirror(void);

#ifdef __cplusplus
}
#endif

#endif
