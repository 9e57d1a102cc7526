// SPDX-License-Identifier: MIT
//
// Asks the agent's interface, and says in plain words why it did not answer.

const PATIENCE_MS = 20000;
const FIRST_PAUSE_MS = 1000;
const LONGEST_PAUSE_MS = 30000;

// The interface's address, below the page's own, which a proxy may have moved.
const BASE = new URL('api/v1/', document.baseURI);

// Why there is no answer. `isPassing`: it may help to ask again.
export class Problem extends Error {
  constructor(message, {status = 0, retryAfter = 0, isPassing = true} = {}) {
    super(message);
    Object.assign(this, {status, retryAfter, isPassing});
  }
}

const WORDS = {
  401: 'The agent asks for a name and a password. Load the page again to give them.',
  403: 'The agent refuses this address.',
  503: 'The agent cannot answer now.',
};

async function problemOf(response) {
  let detail = '';
  if (/json/.test(response.headers.get('Content-Type') ?? '')) {
    const answer = await response.json().catch(() => ({}));
    detail = String(answer.detail || answer.title || '');
  }
  const status = response.status;
  const message = detail || WORDS[status] || `The agent answered with the status ${status}.`;
  return new Problem(message, {
    status,
    retryAfter: 1000 * (parseInt(response.headers.get('Retry-After'), 10) || 0),
    isPassing: status >= 500 || status === 429,
  });
}

export function urlOf(path, query = null) {
  const url = new URL(path, BASE);
  if (query) url.search = new URLSearchParams(query);
  return url;
}

export const objectPath = (kind, key) => `${kind}/${encodeURIComponent(key)}`;

const early = new Map();  // promises of answers that nobody has taken yet, by address

// Asks for what will be wanted soon.
export function getEarly(path, query = null) {
  const answer = request(urlOf(path, query));
  answer.catch(() => {});  // who takes it sees the problem
  early.set(urlOf(path, query).href, answer);
}

// The JSON that is behind a path; throws Problem. What was asked for early is given once.
export function get(path, query = null) {
  const url = urlOf(path, query);
  const answer = early.get(url.href) ?? request(url);
  early.delete(url.href);
  return answer;
}

async function request(url) {
  let response;
  try {
    response = await fetch(url, {
      headers: {Accept: 'application/json'},
      signal: AbortSignal.timeout(PATIENCE_MS),
    });
    if (response.ok) return await response.json();
  } catch (error) {
    throw new Problem(error.name === 'TimeoutError' ? 'The agent does not answer.'
                                                    : 'The agent cannot be reached.');
  }
  throw await problemOf(response);
}

// How long to wait after so many failures in a row, with some chance in it: pages that lost the
// same agent do not come back in one moment.
export function pauseAfter(failures, problem = null) {
  const pause = Math.min(FIRST_PAUSE_MS * 2 ** (failures - 1), LONGEST_PAUSE_MS);
  return Math.max(problem?.retryAfter ?? 0, pause) * (0.8 + 0.4 * Math.random());
}
