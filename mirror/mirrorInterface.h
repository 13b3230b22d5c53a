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
 * 1. **One manager.** There is one mirror per process, used only through the functions below. It
 *    exists from the moment the library is loaded until it is unloaded, and unloading stops a
 *    running mirror first.
 * 2. **Threads.** Call the functions from any thread, but from one thread at a time; the library
 *    does not serialise calls. Mirroring runs on one thread of the library and frames arrive on
 *    another. Neither ever calls the host.
 * 3. **Waiting.** setMirrorConfig(), startMirror() and stopMirror() wait for a run to begin or end
 *    and for the system's replies; captureCurrentStreamFrames() waits for a frame. Do not call
 *    these four on a thread that draws, nor getDisplays(), which takes an image of each display.
 *    No function waits for a light.
 * 4. **Ownership.** The host owns every buffer. The library reads or writes it during the call and
 *    keeps no pointer to it.
 * 5. **Buffers.** All texts are UTF-8 JSON. An input text is read up to its terminating zero and
 *    not changed. An output text is copied up to a bound: a text that fills the bound has NO
 *    terminating zero, a shorter one is padded with zeros up to the bound. If the buffer is zeroed
 *    and one byte longer than the bound, every text that fits ends in a zero.
 * 6. **Failure.** No exception leaves the library and errno is not used. Each function returns only
 *    the values listed with it. Its messages, quoted below, are single lines on standard output.
 *    One error is fatal: a configuration document that is valid JSON but lacks a member, or has one
 *    of the wrong type, ends the process by a failed assertion. Check documents that you did not
 *    write yourself.
 * 7. **Signals.** Starting a run installs handlers for SIGINT, SIGABRT, SIGTERM, SIGBUS, SIGFPE,
 *    SIGPIPE and SIGSEGV that end the run and exit the process with the signal's number. They are
 *    in place when startMirror() has returned 1, stay after the run, and are installed again by
 *    every start; unloading restores the host's handlers. They run on a thread's alternate stack
 *    if it has one. A host that handles signals itself, ignores SIGPIPE, or has a runtime that
 *    does (Python, Node.js, Java, Go, .NET) must restore its own handlers after every start:
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
 *    docs/other-languages.md lists what else each language needs.
 * 8. **Units.** Positions and sizes are pixels of the mirrored display, x to the right, y
 *    downwards, from the top left. Colours are red, green and blue, 0 to 255 each. Transition times
 *    have no unit.
 * 9. **After a run.** The lights keep their last colour when mirroring stops; the host decides what
 *    they show afterwards. Each run needs a fresh configuration: set it before every start.
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
 * If the system reports no display, for example without a desktop session, the list is empty. A
 * display that may not be captured, or has since disappeared, has width and height 0. Works at any
 * time, also while a mirror runs.
 *
 * @param[out] buffer    receives at most `bufferLength` bytes; a longer text is cut off and
 *                       unterminated
 * @param bufferLength   its size in bytes, not negative; with 0 nothing is written. 1024 bytes hold
 *                       every list
 * @retval 1   The list was written.
 * @retval -1  "Error getting displays": memory ran out. The buffer is untouched.
 */
int getDisplays(char *buffer, int bufferLength);

/**
 * @brief Builds the text that getStreamFrameJson() copies, from the frames captured last.
 *
 *     {"numDevices":1,"devices":[{"ip":"192.0.2.7","animData":"1 101 1 255 0 0 0 5"}]}
 *
 * `animData` is the device's panel count, then for each panel that was sent a colour its
 * identifier, 1, red, green, blue, white (always 0) and 5. Palette mode sends only the panels that
 * changed. For each device without a changed panel, the `animData` of all later devices move up by
 * one entry, which leaves the last one empty.
 *
 * @return The text's length in bytes, without a terminating zero.
 * @retval 0   No `animData` has been captured.
 * @retval -1  "Error writing stream frame(s) to json" (without a line break): memory ran out.
 */
int getSizeOfStreamFrameJson(void);

/**
 * @brief Copies the text of the last getSizeOfStreamFrameJson().
 *
 * Call getSizeOfStreamFrameJson() before every call of this function, and do not call getPalette()
 * between the two: it overwrites the text.
 *
 * @param[out] buffer  receives exactly the number of bytes that the last size call with a positive
 * result returned, and no terminating zero
 * @retval 0   The text was copied.
 * @retval -1  "Error copying stream frames" (without a line break): memory ran out.
 */
int getStreamFrameJson(char *buffer);

/**
 * @brief Asks the running mirror to keep a copy of the next frame that it sends, and waits for it,
 *        at most for about a second.
 *
 * In melt and fade mode a frame is sent only when the screen's colour changes, so a still
 * screen gives none. Frames captured earlier are dropped in any case.
 *
 * @retval 0   A frame was captured. In palette mode it is empty if no panel changed.
 * @retval -1  The wait timed out: no frame was sent, or no mirror runs.
 */
int captureCurrentStreamFrames(void);

/**
 * @brief Writes the palette of the screen's current colours: at most 8, most frequent hue first.
 *
 *     {"palette":[{"R":12,"G":200,"B":31},{"R":0,"G":0,"B":0}]}
 *
 * The screen is known only while a mirror runs; otherwise the palette is that of a black screen.
 *
 * @param[out] buffer  at least 512 bytes, of which 512 are written; a text of 512 bytes or more
 *                     would be cut off and unterminated (eight colours take less than 230)
 * @retval 0   The palette was written.
 * @retval -1  Memory ran out; nothing is printed and the buffer is untouched.
 */
int getPalette(char *buffer);

/**
 * @brief Applies a configuration document. Ends a running mirror first and never starts one.
 *
 * @param json  the document, ended by a zero
 * @retval 1  It was applied. (If memory ran out while the display stream was created,
 *            "CGDisplayStream Initialization failed!" is printed, and the next run ends at once.)
 * @retval 0  It was not applied. "Bad json!": the text is not JSON, nothing has changed.
 *            "Screen Recording not allowed!": the display may not be captured or does not exist;
 *            display and frame buffer are replaced, devices and mode are unchanged.
 *            "This system has no display streams!": a later macOS may lack them; the same parts
 *            are replaced. "Bad config!": memory ran out, the parts applied so far stay.
 */
int setMirrorConfig(char *json);

/**
 * @brief Starts mirroring. Returns once the run has begun.
 *
 * Call setMirrorConfig() before every start: a second start without it also returns 1, but mirrors
 * a black screen, which turns the lights black in match and palette mode.
 *
 * A device that is absent, or whose address is invalid, is not an error: it receives nothing. A run
 * that ends by itself ("Stream start failed!", "Error during runMirror", an unknown mode) still
 * has to be stopped.
 *
 * @retval 1   A run was started, and the signal handlers are installed.
 * @retval 0   "Mirroring already running.": the last run has not been stopped. "No devices.": no
 *             device is configured.
 * @retval -1  "Error starting mirroring": no thread could be created.
 */
int startMirror(void);

/**
 * @brief Stops mirroring. Waits for the current frame to be sent, for the mode's delay and for the
 *        display stream to stop: normally a fraction of a second.
 *
 * @retval 1   The run was stopped, or none existed.
 * @retval -1  "Error stopping mirror": its thread could not be joined.
 */
int stopMirror(void);

#ifdef __cplusplus
}
#endif

#endif
