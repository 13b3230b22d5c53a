// Takes a picture of the live page at an address: node picture.mjs ADDRESS FILE
import { browser, closeBrowser } from "./support.mjs";

const [address, file] = process.argv.slice(2);
const page = await (await browser()).newPage({
  viewport: { width: 1280, height: 800 },
  colorScheme: "dark",
});
await page.goto(address);
await page.waitForFunction(() => window.panelwall?.events > 10);
const wall = await page.locator("#wall").boundingBox();
await page.setViewportSize({
  width: 1280,
  height: await page.evaluate(() => document.querySelector("footer").offsetTop),
});
await page.mouse.move(wall.x + wall.width * 0.44, wall.y + wall.height * 0.5);
await page.locator("#card").waitFor({ state: "visible" });
await page.waitForTimeout(500); // the numbers are updated four times a second
await page.screenshot({ path: file });
await closeBrowser();
