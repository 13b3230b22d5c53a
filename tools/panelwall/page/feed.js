// The wall's events, over a connection that is made anew whenever it is lost.

const quietTime = 4000; // the wall tells something every second; silence from here on is a loss
const pauseBeforeRetry = 2000;

// Calls on.wall, on.past and on.now with what the events hold, and on.lost when the wall cannot be
// heard any more.
export function listen(on) {
  let source;
  let watch;
  let retry;

  const again = () => {
    source.close();
    clearTimeout(watch);
    clearTimeout(retry);
    on.lost();
    retry = setTimeout(connect, pauseBeforeRetry);
  };

  const connect = () => {
    source = new EventSource("events");
    source.onerror = again;
    for (const name of ["wall", "past", "now"]) {
      source.addEventListener(name, (event) => {
        clearTimeout(watch);
        watch = setTimeout(again, quietTime);
        on[name](JSON.parse(event.data));
      });
    }
  };

  connect();
}

// The colours of "rrggbbrrggbb------": numbers 0xRRGGBB, or -1 where there is none.
export function readColours(text) {
  const colours = new Int32Array(text.length / 6);
  for (let i = 0; i < colours.length; ++i) {
    const part = text.substr(i * 6, 6);
    colours[i] = part === "------" ? -1 : parseInt(part, 16);
  }
  return colours;
}

export const hex = (colour) => "#" + colour.toString(16).padStart(6, "0");
