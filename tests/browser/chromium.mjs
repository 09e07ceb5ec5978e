// Debian's Chromium, headless, for the browser tests: a fresh profile in a
// temporary folder each time, and never a browser that playwright-core would
// download.
import {mkdtempSync, rmSync} from 'node:fs';
import {tmpdir} from 'node:os';
import {join} from 'node:path';

import {chromium} from 'playwright-core';

export const browserPath = process.env.NPTESTS_CHROMIUM || '/usr/bin/chromium';
export const width = 1280;

const launchArgs = [
  '--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
  '--disable-background-networking', '--disable-component-update', '--disable-sync',
];

// The browser with one context (a 1280 x 900 window); close() also removes
// the profile.
export async function launchBrowser() {
  const profile = mkdtempSync(join(tmpdir(), 'nptests-chromium-'));
  const context = await chromium.launchPersistentContext(profile, {
    executablePath: browserPath,
    headless: true,
    args: launchArgs,
    viewport: {width, height: 900},
  });
  return {
    context,
    async close() {
      await context.close();
      rmSync(profile, {recursive: true, force: true});
    },
  };
}
