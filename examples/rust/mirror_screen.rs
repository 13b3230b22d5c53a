//! A host in Rust, standard library only: lists the displays, mirrors the first one onto a light
//! device for some seconds, and shows the data sent and the colours on the screen.
//!
//!     rustc mirror_screen.rs -L native=$(pkg-config --variable=libdir screenMirrorMac)
//!     ./mirror_screen ADDRESS [SECONDS]

use std::ffi::CString;
use std::io::Write;
use std::net::IpAddr;
use std::os::raw::{c_char, c_int, c_void};
use std::time::Duration;

mod library {
    use super::*;

    #[link(name = "screenMirrorMac")]
    extern "C" {
        pub fn getDisplays(buffer: *mut c_char, bufferLength: c_int) -> c_int;
        pub fn getSizeOfStreamFrameJson() -> c_int;
        pub fn getStreamFrameJson(buffer: *mut c_char) -> c_int;
        pub fn captureCurrentStreamFrames() -> c_int;
        pub fn getPalette(buffer: *mut c_char) -> c_int;
        pub fn setMirrorConfig(json: *mut c_char) -> c_int;
        pub fn startMirror() -> c_int;
        pub fn stopMirror() -> c_int;
    }
}

mod system {
    use super::*;

    extern "C" {
        pub fn sigaction(signal: c_int, wanted: *const c_void, before: *mut c_void) -> c_int;
        pub fn isatty(descriptor: c_int) -> c_int;
    }
}

/// An error message of one line.
type Error = String;

/// The text in a buffer. A text that fills the buffer has no terminating zero and may be cut.
fn text_in(buffer: Vec<u8>, if_cut: &str) -> Result<String, Error> {
    match buffer.iter().position(|&byte| byte == 0) {
        Some(end) => Ok(String::from_utf8_lossy(&buffer[..end]).into_owned()),
        None => Err(if_cut.into()),
    }
}

/// The values of each object in `json` that has these numeric members. A real host uses a JSON
/// parser.
fn numbers_in<const N: usize>(json: &str, members: [&str; N]) -> Vec<[u32; N]> {
    let number_of = |object: &str, member: &str| {
        let after = object.split_once(&format!("\"{member}\":"))?.1;
        let end = after
            .find(|c: char| !c.is_ascii_digit())
            .unwrap_or(after.len());
        after[..end].parse().ok()
    };
    let numbers_of = |object: &str| {
        let mut numbers = [0; N];
        for (number, member) in numbers.iter_mut().zip(members) {
            *number = number_of(object, member)?;
        }
        Some(numbers)
    };
    json.split('}').filter_map(numbers_of).collect()
}

fn say(line: &str) -> Result<(), Error> {
    writeln!(std::io::stdout(), "{line}").map_err(|_| "standard output cannot be written".into())
}

fn first_display() -> Result<[u32; 3], Error> {
    let mut buffer = vec![0; 4096];
    let length = buffer.len() as c_int;
    if unsafe { library::getDisplays(buffer.as_mut_ptr().cast(), length) } != 1 {
        return Err("the displays cannot be listed".into());
    }
    let list = text_in(buffer, "the list of displays is cut")?;
    let displays = numbers_in(&list, ["displayID", "width", "height"]);
    for [id, width, height] in &displays {
        say(&format!("display {id}: {width} x {height}"))?;
    }
    displays
        .first()
        .copied()
        .ok_or_else(|| "there is no display to mirror; on Linux, DISPLAY names an X server".into())
}

/// Four panels in a row across the middle of the display.
fn configuration([id, width, height]: [u32; 3], address: &str) -> String {
    let panels: Vec<String> = (0..4)
        .map(|i| {
            let (x, y) = ((2 * i + 1) * width / 8, height / 2);
            format!(
                r#"{{"panelID": {}, "centroidX": {x}, "centroidY": {y}}}"#,
                i + 1
            )
        })
        .collect();
    // Integers in the document are signed: pass the identifier's 32 bits as a signed integer.
    format!(
        r#"{{"displayID": {}, "mode": 0, "devices": [{{"ip": "{address}", "controlVersion": 2,
           "shapeType": 0, "scaleFactor": 1.0, "panels": [{}]}}]}}"#,
        id as i32,
        panels.join(", ")
    )
}

/// startMirror() replaces the handlers of these signals with the library's, which end the process.
/// They are in place when it returns, so that is when to restore the host's own handlers. 256 bytes
/// hold sigaction()'s structure on every system.
fn start_keeping_signal_handlers() -> c_int {
    const SIGBUS: c_int = if cfg!(target_os = "macos") { 10 } else { 7 };
    // SIGINT, SIGABRT, SIGTERM, SIGBUS, SIGFPE, SIGPIPE, SIGSEGV
    const REPLACED: [c_int; 7] = [2, 6, 15, SIGBUS, 8, 13, 11];
    let mut saved = [[0u64; 32]; REPLACED.len()];
    unsafe {
        for (signal, action) in REPLACED.iter().zip(&mut saved) {
            system::sigaction(*signal, std::ptr::null(), action.as_mut_ptr().cast());
        }
        let result = library::startMirror();
        for (signal, action) in REPLACED.iter().zip(&saved) {
            system::sigaction(*signal, action.as_ptr().cast(), std::ptr::null_mut());
        }
        result
    }
}

/// Mirrors from start() until it is dropped. A process can have one run at a time.
struct Run {
    running: bool,
}

impl Run {
    fn start(document: String) -> Result<Run, Error> {
        let text = CString::new(document).map_err(|_| "the configuration has a zero in it")?;
        // setMirrorConfig() does not write to the text.
        if unsafe { library::setMirrorConfig(text.as_ptr() as *mut c_char) } != 1 {
            return Err("the configuration was not applied: the screen cannot be captured".into());
        }
        match start_keeping_signal_handlers() {
            1 => Ok(Run { running: true }),
            0 => {
                Err("mirroring was not started: a run exists already or there is no device".into())
            }
            _ => Err("mirroring was not started: no thread could be made".into()),
        }
    }

    /// For hosts that check for a failed stop, which drop() cannot report.
    fn stop(mut self) -> Result<(), Error> {
        self.running = false;
        match unsafe { library::stopMirror() } {
            1 => Ok(()),
            _ => Err("mirroring could not be stopped".into()),
        }
    }

    fn sent(&self) -> Result<String, Error> {
        if unsafe { library::captureCurrentStreamFrames() } != 0 {
            return Err("nothing was sent within a second".into());
        }
        let size = unsafe { library::getSizeOfStreamFrameJson() };
        if size < 0 {
            return Err("the snapshot could not be made".into());
        }
        if size == 0 {
            return Err("no frame was captured".into());
        }
        let mut buffer = vec![0u8; size as usize];
        if unsafe { library::getStreamFrameJson(buffer.as_mut_ptr().cast()) } != 0 {
            return Err("the snapshot could not be fetched".into());
        }
        Ok(String::from_utf8_lossy(&buffer).into_owned())
    }
}

impl Drop for Run {
    fn drop(&mut self) {
        if self.running {
            unsafe { library::stopMirror() };
        }
    }
}

fn show_palette() -> Result<(), Error> {
    let mut buffer = vec![0; 512];
    if unsafe { library::getPalette(buffer.as_mut_ptr().cast()) } != 0 {
        return Err("the palette could not be made".into());
    }
    let palette = text_in(buffer, "the palette is cut")?;
    let has_colours = unsafe { system::isatty(1) } == 1;
    let mut line = String::from("palette:");
    for [red, green, blue] in numbers_in(&palette, ["R", "G", "B"]) {
        if has_colours {
            line += &format!(" \x1b[48;2;{red};{green};{blue}m  \x1b[0m");
        }
        line += &format!(" #{red:02x}{green:02x}{blue:02x}");
    }
    say(&line)
}

fn mirror(address: &str, seconds: f64) -> Result<(), Error> {
    // The library accepts only numeric addresses and does not report others.
    if address.parse::<IpAddr>().is_err() {
        return Err(format!("not an IPv4 or IPv6 address: {address}"));
    }
    let display = first_display()?;
    let run = Run::start(configuration(display, address))?;
    say(&format!("mirroring display {} onto {address}", display[0]))?;
    std::thread::sleep(Duration::from_secs_f64(seconds));
    say(&format!("sent: {}", run.sent()?))?;
    show_palette()?;
    run.stop()
}

fn main() {
    let words: Vec<String> = std::env::args().skip(1).collect();
    if words.is_empty() || words.len() > 2 {
        eprintln!("usage: mirror_screen ADDRESS [SECONDS]");
        std::process::exit(2);
    }
    let seconds = words
        .get(1)
        .and_then(|word| word.parse().ok())
        .unwrap_or(10.0);
    if let Err(error) = mirror(&words[0], seconds) {
        eprintln!("mirror_screen: {error}");
        std::process::exit(1);
    }
}
