// A host in Go: lists the displays, mirrors the first one onto a light device for some seconds, and
// shows the data sent and the colours on the screen.
//
//	go build mirrorScreen.go
//	./mirrorScreen ADDRESS [SECONDS]
package main

/*
#cgo pkg-config: screenMirrorMac

#include "mirror/mirrorInterface.h"

#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

// startMirror() replaces the handlers of these signals with the library's, which end the process.
// They are in place when it returns, so that is when to restore the handlers of Go's runtime. This
// is written in C because calls from Go into C take time, and the gap must be short.
static int startKeepingSignalHandlers(void) {
    static const int replaced[] = {SIGINT, SIGABRT, SIGTERM, SIGBUS, SIGFPE, SIGPIPE, SIGSEGV};
    enum { count = sizeof replaced / sizeof *replaced };
    struct sigaction saved[count];
    for (int i = 0; i < count; ++i)
        sigaction(replaced[i], NULL, &saved[i]);
    const int result = startMirror();
    for (int i = 0; i < count; ++i)
        sigaction(replaced[i], &saved[i], NULL);
    return result;
}
*/
import "C"

import (
	"bufio"
	"bytes"
	"encoding/json"
	"errors"
	"fmt"
	"net"
	"os"
	"os/signal"
	"strconv"
	"syscall"
	"time"
	"unsafe"
)

type display struct {
	DisplayID     uint32
	Width, Height int
}

type colour struct{ R, G, B int }

type sentFrame struct{ IP, AnimData string }

type panel struct {
	PanelID   int `json:"panelID"`
	CentroidX int `json:"centroidX"`
	CentroidY int `json:"centroidY"`
}

type device struct {
	IP             string  `json:"ip"`
	ControlVersion int     `json:"controlVersion"`
	ShapeType      int     `json:"shapeType"`
	ScaleFactor    float64 `json:"scaleFactor"`
	Panels         []panel `json:"panels"`
}

type configuration struct {
	DisplayID int32    `json:"displayID"`
	Mode      int      `json:"mode"`
	Devices   []device `json:"devices"`
}

// Write errors are reported by flush().
var out = bufio.NewWriter(os.Stdout)

func pointerTo(buffer []byte) *C.char {
	return (*C.char)(unsafe.Pointer(&buffer[0]))
}

// A text that fills its buffer has no terminating zero and may be cut.
func readText(buffer []byte, into any, ifCut string) error {
	end := bytes.IndexByte(buffer, 0)
	if end < 0 {
		return errors.New(ifCut)
	}
	return json.Unmarshal(buffer[:end], into)
}

func firstDisplay() (display, error) {
	buffer := make([]byte, 4096)
	if C.getDisplays(pointerTo(buffer), C.int(len(buffer))) != 1 {
		return display{}, errors.New("the displays cannot be listed")
	}
	var list struct{ Displays []display }
	if err := readText(buffer, &list, "the list of displays is cut"); err != nil {
		return display{}, err
	}
	for _, one := range list.Displays {
		fmt.Fprintf(out, "display %d: %d x %d\n", one.DisplayID, one.Width, one.Height)
	}
	if len(list.Displays) == 0 {
		return display{}, errors.New(
			"there is no display to mirror; on Linux, DISPLAY names an X server")
	}
	return list.Displays[0], nil
}

// Four panels in a row across the middle of the display.
func configure(on display, address string) error {
	light := device{IP: address, ControlVersion: 2, ShapeType: 0, ScaleFactor: 1}
	for i := 0; i < 4; i++ {
		light.Panels = append(light.Panels, panel{i + 1, (2*i + 1) * on.Width / 8, on.Height / 2})
	}
	// Integers in the document are signed: pass the identifier's 32 bits as a signed integer.
	document, err := json.Marshal(configuration{int32(on.DisplayID), 0, []device{light}})
	if err != nil {
		return err
	}
	text := C.CString(string(document))
	defer C.free(unsafe.Pointer(text))
	if C.setMirrorConfig(text) != 1 {
		return errors.New("the configuration was not applied: the screen cannot be captured")
	}
	return nil
}

func start() error {
	switch C.startKeepingSignalHandlers() {
	case 1:
		return nil
	case 0:
		return errors.New("mirroring was not started: a run exists already or there is no device")
	default:
		return errors.New("mirroring was not started: no thread could be made")
	}
}

func showSent() error {
	if C.captureCurrentStreamFrames() != 0 {
		return errors.New("nothing was sent within a second")
	}
	size := C.getSizeOfStreamFrameJson()
	if size < 0 {
		return errors.New("the snapshot could not be made")
	}
	if size == 0 {
		return errors.New("no frame was captured")
	}
	buffer := make([]byte, size)
	if C.getStreamFrameJson(pointerTo(buffer)) != 0 {
		return errors.New("the snapshot could not be fetched")
	}
	var sent struct{ Devices []sentFrame }
	if err := json.Unmarshal(buffer, &sent); err != nil {
		return err
	}
	for _, frame := range sent.Devices {
		fmt.Fprintf(out, "sent to %s: %s\n", frame.IP, frame.AnimData)
	}
	return nil
}

func showPalette() error {
	buffer := make([]byte, 512)
	if C.getPalette(pointerTo(buffer)) != 0 {
		return errors.New("the palette could not be made")
	}
	var list struct{ Palette []colour }
	if err := readText(buffer, &list, "the palette is cut"); err != nil {
		return err
	}
	fmt.Fprint(out, "palette:")
	for _, one := range list.Palette {
		if C.isatty(1) == 1 {
			fmt.Fprintf(out, " \033[48;2;%d;%d;%dm  \033[0m", one.R, one.G, one.B)
		}
		fmt.Fprintf(out, " #%02x%02x%02x", one.R, one.G, one.B)
	}
	fmt.Fprintln(out)
	return nil
}

func flush() error {
	if out.Flush() != nil {
		return errors.New("standard output cannot be written")
	}
	return nil
}

func mirror(address string, duration time.Duration) (err error) {
	// The library accepts only numeric addresses and does not report others.
	if net.ParseIP(address) == nil {
		return fmt.Errorf("not an IPv4 or IPv6 address: %s", address)
	}
	first, err := firstDisplay()
	if err != nil {
		return err
	}
	if err = configure(first, address); err != nil {
		return err
	}
	if err = start(); err != nil {
		return err
	}
	// Always stop a run that was started, even after an error.
	defer func() {
		if C.stopMirror() != 1 && err == nil {
			err = errors.New("mirroring could not be stopped")
		}
	}()

	fmt.Fprintf(out, "mirroring display %d onto %s\n", first.DisplayID, address)
	if err = flush(); err != nil {
		return err
	}
	time.Sleep(duration)
	if err = showSent(); err != nil {
		return err
	}
	if err = showPalette(); err != nil {
		return err
	}
	return flush()
}

func main() {
	seconds := 10.0
	if len(os.Args) == 3 {
		seconds, _ = strconv.ParseFloat(os.Args[2], 64)
	} else if len(os.Args) != 2 {
		fmt.Fprintln(os.Stderr, "usage: mirrorScreen ADDRESS [SECONDS]")
		os.Exit(2)
	}
	// A write to a closed standard output should fail; by default Go's runtime ends the process.
	signal.Ignore(syscall.SIGPIPE)
	if err := mirror(os.Args[1], time.Duration(seconds*float64(time.Second))); err != nil {
		out.Flush()
		fmt.Fprintln(os.Stderr, "mirrorScreen:", err)
		os.Exit(1)
	}
}
