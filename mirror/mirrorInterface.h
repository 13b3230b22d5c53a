/**
 * @file mirrorInterface.h
 * @brief Screen mirroring: all that a host needs, in plain C.
 *
 * The library mirrors what one display shows onto networked light devices. Hand it a configuration,
 * start it, stop it. A whole host, which mirrors the first display onto one panel for a minute:
 *
 * @code{.c}
 * #include "mirror/mirrorInterface.h"
 * #include <stdio.h>
 * #include <stdlib.h>
 * #include <string.h>
 * #include <unistd.h>
 *
 * int main(void) {
 *     char displays[1025] = "", config[512];
 *     getDisplays(displays, 1024);
 *     const char *first = strstr(displays, "\"displayID\":");
 *     if (first == NULL)
 *         return 1;
 *     snprintf(config, sizeof config,
 *              "{\"displayID\": %d, \"mode\": 0, \"devices\": [{"
 *              "\"ip\": \"192.0.2.7\", \"controlVersion\": 2, \"shapeType\": 0,"
 *              "\"scaleFactor\": 1.5, \"panels\": ["
 *              "{\"panelID\": 101, \"centroidX\": 640, \"centroidY\": 360}]}]}",
 *              (int)strtoul(first + strlen("\"displayID\":"), NULL, 10));
 *     if (setMirrorConfig(config) != 1 || startMirror() != 1)
 *         return 1;
 *     sleep(60);
 *     return stopMirror() == 1 ? 0 : 1;
 * }
 * @endcode
 *
 * docs/configuration.md describes the members of the document and how unusual values are treated;
 * docs/mirror-config.schema.json is its JSON schema.
 *
 * ## Conventions
 *
 * 1. **One manager.** There is one mirror per process, used through the functions below only. It
 *    exists from the moment the library is loaded until it is unloaded, and unloading stops a
 *    running mirror first.
 * 2. **Threads.** Call the functions from one thread at a time, any thread; the library does not
 *    serialise them. Mirroring runs on a thread of its own and frames arrive on another; both are
 *    the library's, and neither ever calls the host.
 * 3. **Waiting.** setMirrorConfig(), startMirror() and stopMirror() wait for a run to end or begin
 *    and for the system's answers, captureCurrentStreamFrames() waits for a frame. Keep these four
 *    off a thread that draws. Nothing waits for a light.
 * 4. **Ownership.** The host owns every buffer. The library reads or writes it during the call and
 *    keeps no pointer to it.
 * 5. **Buffers.** All texts are UTF-8 JSON. Texts handed in are read up to their terminating zero
 *    and not changed. Texts handed out are bounded copies: a text that fills its bound arrives
 *    WITHOUT a terminating zero, a shorter one is padded with zeros up to the bound. Give a buffer
 *    of one byte more than the bound, zeroed, and every text that fits ends in a zero.
 * 6. **Failure.** No exception leaves the library and errno is not used. Each function returns only
 *    the values listed with it. What it prints is one line on standard output, in quotes below. One
 *    thing is fatal: a configuration document that is valid JSON but lacks a member, or has one of
 *    the wrong type, stops the process by assertion. Check documents that you did not write
 *    yourself.
 * 7. **Signals.** Starting a run installs handlers for SIGINT, SIGABRT, SIGTERM, SIGBUS, SIGFPE,
 *    SIGPIPE and SIGSEGV which end the run and exit the process with the signal's number. They are
 *    in place when startMirror() has returned 1, stay after the run, and are installed again by
 *    every start; unloading gives back what the host had. They run on the alternate stack of a
 *    thread that has one. A host that handles signals itself, ignores SIGPIPE, or has a runtime
 *    that does (Python, Node.js, Java, Go, .NET) puts back what it had, at every start:
 *
 *        static const int replaced[] = {SIGINT,  SIGABRT, SIGTERM, SIGBUS,
 *                                       SIGFPE,  SIGPIPE, SIGSEGV};
 *        struct sigaction own[7];
 *        for (int i = 0; i < 7; ++i)
 *            sigaction(replaced[i], NULL, &own[i]);
 *        int started = startMirror();
 *        for (int i = 0; i < 7; ++i)
 *            sigaction(replaced[i], &own[i], NULL);
 *
 *    docs/other-languages.md says what each language needs beyond that.
 * 8. **Units.** Positions and sizes are pixels of the mirrored display, x to the right, y
 *    downwards, from the top left. Colours are red, green and blue, 0 to 255 each. Transition times
 *    have no unit.
 * 9. **What stays.** The lights keep their last colour when mirroring stops; the host decides what
 *    they show afterwards. A configuration serves one run: set it again before the next start.
 */
#ifndef MIRROR_INTERFACE_H
#define MIRROR_INTERFACE_H

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @brief Lists the active displays, at most 10, in the system's order.
 *
 *     {"numDisplays":1,"displays":[{"displayID":1,"width":2880,"height":1800}]}
 *
 * If the system reports no display, as without a desktop session, the list is empty. A display that
 * may not be captured, or has gone meanwhile, has width and height 0. Works at any time, also while
 * a mirror runs.
 *
 * @param[out] buffer    receives at most `bufferLength` bytes; a longer text arrives cut and
 *                       unterminated
 * @param bufferLength   its size in bytes, not negative; with 0 nothing is written. 1024 bytes hold
 *                       every list
 * @retval 1   The list was written.
 * @retval -1  "Error getting displays": memory ran out. The buffer is untouched.
 */
int getDisplays(char *buffer, int bufferLength);

/**
 * @brief Makes the text that getStreamFrameJson() hands out, from the frames captured last.
 *
 *     {"numDevices":1,"devices":[{"ip":"192.0.2.7","animData":"1 101 1 255 0 0 0 5"}]}
 *
 * `animData` is the device's panel count, then for each panel that was sent a colour its
 * identifier, 1, red, green, blue, white (always 0) and 5. In palette mode only the panels that
 * changed are there, and a device of which none changed is missing: those after it move up, and at
 * the end of the list `animData` is empty.
 *
 * @return The text's length in bytes, without a terminating zero.
 * @retval 0   Nothing has been captured.
 * @retval -1  "Error writing stream frame(s) to json" (without a line break): memory ran out.
 */
int getSizeOfStreamFrameJson(void);

/**
 * @brief Copies the text of the last getSizeOfStreamFrameJson().
 *
 * Ask for the size before every fetch. getPalette() uses the same store: call it before the size is
 * asked or after the text has been fetched, not in between.
 *
 * @param[out] buffer  receives exactly as many bytes as the last size call that returned more than
 * 0 said, and no terminating zero
 * @retval 0   The text was copied.
 * @retval -1  "Error copying stream frames" (without a line break): it could not be copied.
 */
int getStreamFrameJson(char *buffer);

/**
 * @brief Asks the running mirror to keep a copy of the next frame that it sends, and waits for it
 *        for about a second.
 *
 * In melt and fade mode a frame is sent only when the screen's colour changes, so a still
 * screen gives none. The frames captured before are dropped either way.
 *
 * @retval 0   A frame was captured.
 * @retval -1  The wait timed out: nothing was sent, or nothing runs.
 */
int captureCurrentStreamFrames(void);

/**
 * @brief Writes the palette of the colours on the screen now, most frequent hue first, at most 8.
 *
 *     {"palette":[{"R":12,"G":200,"B":31},{"R":0,"G":0,"B":0}]}
 *
 * The screen is known only while a mirror runs; otherwise the palette is that of a black screen.
 *
 * @param[out] buffer  512 bytes at least, all of which are written; a text of 512 bytes or more
 *                     would arrive cut and unterminated (eight colours take less than 230)
 * @retval 0   The palette was written.
 * @retval -1  Memory ran out; nothing is printed and the buffer is untouched.
 */
int getPalette(char *buffer);

/**
 * @brief Applies a configuration document. Ends a running mirror first and never starts one.
 *
 * @param json  the document, ended by a zero
 * @retval 1  It was applied. (If memory ran out while the display stream was made, "CGDisplayStream
 *            Initialization failed!" is printed, and the next run will end at once.)
 * @retval 0  It was not. "Bad json!": the text is not JSON, nothing has changed. "Screen Recording
 *            not allowed!": the display may not be captured or is not there; display and frame
 *            buffer are replaced, devices and mode are as before. "This system has no display
 *            streams!": a later macOS may lack them; the same is replaced. "Bad config!": memory
 *            ran out, what was done so far stays.
 */
int setMirrorConfig(char *json);

/**
 * @brief Starts mirroring. Returns once the run has begun.
 *
 * Call setMirrorConfig() before every start: a second start without it returns 1 as well, but turns
 * the lights black.
 *
 * A device that is not there, or whose address is none, is no failure: it receives nothing. A run
 * that ends by itself ("Stream start failed!", "Error during runMirror", an unknown mode) still
 * has to be stopped.
 *
 * @retval 1   A run was started, and the signal handlers are installed.
 * @retval 0   "Mirroring already running.": a run exists that has not been stopped. "No devices.":
 *             none is configured.
 * @retval -1  "Error starting mirroring": no thread could be created.
 */
int startMirror(void);

/**
 * @brief Stops mirroring: waits for the current frame to be sent and for the mode's delay, a
 *        fraction of a second.
 *
 * @retval 1   The run was stopped, or none existed.
 * @retval -1  "Error stopping mirror": its thread could not be joined.
 */
int stopMirror(void);

#ifdef __cplusplus
}
#endif

#endif
