// What the page's parts share: elements, colours and lengths of time as text.

export function element(name, properties, ...children) {
  const made = Object.assign(document.createElement(name), properties);
  made.append(...children);
  return made;
}

// Changes only what is different, so that a page at rest is not laid out again.
export function setText(target, text) {
  if (target.textContent !== text) target.textContent = text;
}

// The colours of "rrggbbrrggbb------": numbers 0xRRGGBB, or -1 where there is none.
export const readColours = (text) =>
  Int32Array.from(text.match(/.{6}/g) ?? [], (part) =>
    part === "------" ? -1 : parseInt(part, 16),
  );

export const hex = (colour) => "#" + colour.toString(16).padStart(6, "0");

export function age(milliseconds) {
  const seconds = milliseconds / 1000;
  if (seconds < 60) return `${seconds.toFixed(1)} s`;
  return seconds < 3600 ? `${Math.round(seconds / 60)} min` : `${Math.round(seconds / 3600)} h`;
}
