// Zooms and pans the wall by wheel, mouse, fingers, buttons and keys.

const step = 1.5;

// Calls `changed` after each change. Returns what keys do: functions by the keys' names.
export function letZoom(wall, canvas, buttons, changed) {
  const zoomBy = (factor, x, y) => {
    wall.zoomBy(factor, x, y);
    canvas.toggleAttribute("data-zoomed", wall.zoom > 1);
    changed();
  };
  // Around the selected panel if there is one, otherwise around the middle.
  const zoomStep = (factor) => {
    const { left, top, length } = wall.selected
      ? wall.boxOf(wall.selected)
      : { left: canvas.width / 2, top: canvas.height / 2, length: 0 };
    zoomBy(factor, (left + length / 2) / wall.density, (top + length / 2) / wall.density);
    if (wall.selected) wall.reveal(wall.selected);
  };
  const ways = {
    in: () => zoomStep(step),
    out: () => zoomStep(1 / step),
    all: () => zoomStep(0),
  };
  for (const [name, way] of Object.entries(ways)) buttons[name].addEventListener("click", way);

  // One pressed pointer pans, two also zoom.
  const pressed = new Map();
  const grip = () => {
    const points = [...pressed.values()];
    const middle = (axis) => points.reduce((sum, point) => sum + point[axis], 0) / points.length;
    const [one, other] = points;
    const spread = other ? Math.hypot(one.x - other.x, one.y - other.y) : 1;
    return { x: middle("x"), y: middle("y"), spread: Math.max(1, spread) };
  };
  const positionOf = (event) => {
    const { left, top } = canvas.getBoundingClientRect();
    return { x: event.clientX - left, y: event.clientY - top };
  };
  canvas.addEventListener("pointerdown", (event) => {
    if (pressed.size < 2) pressed.set(event.pointerId, positionOf(event));
    canvas.setPointerCapture(event.pointerId);
  });
  canvas.addEventListener("pointermove", (event) => {
    if (!pressed.has(event.pointerId)) return;
    const before = grip();
    pressed.set(event.pointerId, positionOf(event));
    const now = grip();
    wall.pan(now.x - before.x, now.y - before.y);
    zoomBy(now.spread / before.spread, now.x, now.y);
  });
  for (const end of ["pointerup", "pointercancel"])
    canvas.addEventListener(end, (event) => pressed.delete(event.pointerId));
  // One finger scrolls the page as long as the whole wall is in sight.
  canvas.addEventListener("touchmove", (event) => {
    if (event.cancelable && (event.touches.length > 1 || wall.zoom > 1)) event.preventDefault();
  }, { passive: false });

  // With Ctrl the wheel zooms, as fingers on a touchpad do. Without, it moves what is shown, and
  // the page where that ends.
  canvas.addEventListener("wheel", (event) => {
    const pixels = event.deltaMode === WheelEvent.DOM_DELTA_LINE ? 16 : 1;
    const { x, y } = positionOf(event);
    if (event.ctrlKey) zoomBy(2 ** ((-event.deltaY * pixels) / 200), x, y);
    else if (!wall.pan(-event.deltaX * pixels, -event.deltaY * pixels)) return;
    else changed();
    event.preventDefault();
  }, { passive: false });

  return { "+": ways.in, "=": ways.in, "-": ways.out, 0: ways.all };
}
