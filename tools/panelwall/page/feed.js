// Receives the wall's events, and estimates its clock from them although some arrive late.

const quietTime = 4000; // the wall sends every second; silence this long is a lost connection
const pauseBeforeRetry = 2000;

// Calls on.wall, on.past and on.now with the events' data. When the connection is lost, calls
// on.lost and reconnects.
export function listen(on) {
  const source = new EventSource("events");
  let watch;
  const again = () => {
    source.close();
    clearTimeout(watch);
    on.lost();
    setTimeout(listen, pauseBeforeRetry, on);
  };
  source.onerror = again;
  for (const name of ["wall", "past", "now"]) {
    source.addEventListener(name, (event) => {
      clearTimeout(watch);
      watch = setTimeout(again, quietTime);
      on[name](JSON.parse(event.data));
    });
  }
}

// Two machines' clocks drift apart by less than this share, so the estimate goes back no faster.
const drift = 0.001;

export class WallClock {
  ahead = 0; // the wall's clock minus the page's
  heardAt = -Infinity;

  // Lets the next event set the clock, regardless of earlier ones.
  forget() {
    this.heardAt = -Infinity;
  }

  // An event with the wall's time `time` arrived at `at` on the page's clock. The event with the
  // shortest delay is the most accurate; delayed ones turn the clock back only by the drift.
  follow(time, at) {
    const least = this.ahead - drift * (at - this.heardAt);
    this.ahead = Math.max(time - at, least);
    this.heardAt = at;
  }

  // The wall's time at `at` on the page's clock.
  at(at) {
    return at + this.ahead;
  }
}
