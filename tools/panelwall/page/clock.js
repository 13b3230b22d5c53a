// The wall's clock, as a page can know it from events that are sometimes late.

// Two machines' clocks part by less than a thousandth; so much the page gives way.
const drift = 0.001;

export class WallClock {
  constructor() {
    this.ahead = 0; // the wall's clock less the page's
    this.forget();
  }

  // The next event tells the time whatever those before it told.
  forget() {
    this.heardAt = -Infinity;
  }

  // An event of the wall's time came at `at` of the page's clock. The quickest one says most: those
  // that come later than it were held up on their way and turn nothing back.
  hear(time, at) {
    const least = this.ahead - drift * (at - this.heardAt);
    this.ahead = Math.max(time - at, least);
    this.heardAt = at;
  }

  // The wall's time at `at` of the page's clock.
  at(at) {
    return at + this.ahead;
  }
}
