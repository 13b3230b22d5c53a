// Shared by the page's parts: elements, and colours and durations as text.

export function element(name, properties, ...children) {
  const made = Object.assign(document.createElement(name), properties);
  made.append(...children);
  return made;
}

// Sets the text only if it differs, so that an unchanged page is not laid out again.
export function setText(target, text) {
  if (target.textContent !== text) target.textContent = text;
}

// A device's address and port.
export const addressOf = ({ ip, port }) => `${ip.includes(":") ? `[${ip}]` : ip}:${port}`;

// Parses "rrggbbrrggbb------" into numbers 0xRRGGBB, with -1 for no colour.
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
