// The wall's events, and its clock as a page can know it from events that are sometimes late.

const quietTime = 4000; // the wall tells something every second; silence from here on is a loss
const pauseBeforeRetry = 2000;

// Calls on.wall, on.past and on.now with what the events hold, and on.lost when the wall cannot be
// heard any more; then reconnects.
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

// Two machines' clocks part by less than a thousandth; so much the page gives way.
const drift = 0.001;

export class WallClock {
  ahead = 0; // the wall's clock less the page's
  heardAt = -Infinity;

  // The next event tells the time whatever those before it told.
  forget() {
    this.heardAt = -Infinity;
  }

  // An event of the wall's time came at `at` of the page's clock. The quickest one says most: those
  // that come later than it were held up on their way and turn nothing back.
  follow(time, at) {
    const least = this.ahead - drift * (at - this.heardAt);
    this.ahead = Math.max(time - at, least);
    this.heardAt = at;
  }

  // The wall's time at `at` of the page's clock.
  at(at) {
    return at + this.ahead;
  }
}
