// A headless Chromium, driven through chromedriver: opens a page, clicks, types and drags as a reader does,
// and tells what the page wrote to the console and what it asked of the network.
import { spawn } from 'node:child_process';
import { createInterface } from 'node:readline';

const ELEMENT = 'element-6066-11e4-a52e-4f735466cecf';
const KEYS = {
  Backspace: '\ue003',
  Enter: '\ue007',
  ArrowLeft: '\ue012',
  ArrowRight: '\ue014',
  ArrowDown: '\ue015',
};

async function startDriver() {
  const driver = spawn('chromedriver', ['--port=0'], { stdio: ['ignore', 'pipe', 'inherit'] });
  for await (const line of createInterface({ input: driver.stdout })) {
    const port = /started successfully on port (\d+)/.exec(line)?.[1];
    if (port) return { driver, address: `http://127.0.0.1:${port}` };
  }
  throw new Error('chromedriver did not start');
}

export class Browser {
  static async start(downloads) {
    const browser = new Browser();
    Object.assign(browser, await startDriver());
    const args = [
      'headless=new',
      'no-sandbox',
      'disable-gpu',
      'disable-dev-shm-usage',
      'window-size=1300,1000',
    ];
    const prefs = { 'download.default_directory': downloads };
    const { sessionId } = await browser.send('POST', '/session', {
      capabilities: {
        alwaysMatch: {
          browserName: 'chrome',
          'goog:chromeOptions': { args: args.map((arg) => `--${arg}`), prefs },
          'goog:loggingPrefs': { browser: 'ALL', performance: 'ALL' },
        },
      },
    });
    browser.session = `/session/${sessionId}`;
    return browser;
  }

  async stop() {
    await this.call('DELETE', '').catch(() => {});
    this.driver.kill();
  }

  async send(method, path, body) {
    const answer = await fetch(this.address + path, {
      method,
      body: method === 'POST' ? JSON.stringify(body ?? {}) : undefined,
    });
    const { value } = await answer.json();
    if (value?.error) throw new Error(`${value.error}: ${value.message}`);
    return value;
  }

  call(method, path, body) {
    return this.send(method, this.session + path, body);
  }

  open(url) {
    return this.call('POST', '/url', { url });
  }

  run(script, ...args) {
    return this.call('POST', '/execute/sync', { script, args });
  }

  protocol(cmd, params = {}) {
    return this.call('POST', '/goog/cdp/execute', { cmd, params });
  }

  async find(css) {
    return (await this.call('POST', '/element', { using: 'css selector', value: css }))[ELEMENT];
  }

  // Until there is such an element; after ten seconds there will be none.
  async waitFor(css) {
    for (const end = Date.now() + 10_000; Date.now() < end;) {
      if (await this.run('return document.querySelector(arguments[0]) !== null', css)) return;
    }
    throw new Error(`no ${css} appeared`);
  }

  text(css) {
    return this.run('return document.querySelector(arguments[0])?.textContent.trim()', css);
  }

  texts(css) {
    return this.run('return [...document.querySelectorAll(arguments[0])].map((e) => e.textContent)', css);
  }

  async click(css) {
    await this.call('POST', `/element/${await this.find(css)}/click`);
  }

  async type(css, text) {
    const element = await this.find(css);
    await this.call('POST', `/element/${element}/clear`);
    await this.call('POST', `/element/${element}/value`, { text: KEYS[text] ?? text });
  }

  async press(key) {
    const value = KEYS[key] ?? key;
    const actions = [
      { type: 'keyDown', value },
      { type: 'keyUp', value },
    ];
    await this.call('POST', '/actions', { actions: [{ type: 'key', id: 'keys', actions }] });
  }

  // Drags along an element, from one share of its width to another.
  async drag(css, from, to) {
    const box = await this.run(
      'const e = document.querySelector(arguments[0]); e.scrollIntoView({ block: "center" });' +
        'const { x, y, width, height } = e.getBoundingClientRect(); return { x, y, width, height }',
      css,
    );
    const at = (share) => ({
      type: 'pointerMove',
      duration: 50,
      x: Math.round(box.x + box.width * share),
      y: Math.round(box.y + box.height / 2),
    });
    const actions = [
      at(from),
      { type: 'pointerDown', button: 0 },
      at((from + to) / 2),
      at(to),
      { type: 'pointerUp', button: 0 },
    ];
    await this.call('POST', '/actions', { actions: [{ type: 'pointer', id: 'mouse', actions }] });
  }

  async messages() {
    const entries = await this.call('POST', '/se/log', { type: 'browser' });
    return entries.map(({ message }) => message);
  }

  // What was asked for and not refused by the page's own policy.
  async requests() {
    const entries = await this.call('POST', '/se/log', { type: 'performance' });
    const events = entries.map(({ message }) => JSON.parse(message).message);
    const of = (name) => events.filter(({ method }) => method === name).map(({ params }) => params);
    const refused = of('Network.loadingFailed').filter(({ blockedReason }) => blockedReason === 'csp');
    const refusedIds = new Set(refused.map(({ requestId }) => requestId));
    return of('Network.requestWillBeSent')
      .filter(({ requestId }) => !refusedIds.has(requestId))
      .map(({ request }) => request.url);
  }

  async screenshot() {
    return Buffer.from(await this.call('GET', '/screenshot'), 'base64');
  }
}
