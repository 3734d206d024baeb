'use strict';

// The events of the simulator change the page; the answers to the person's own actions only tell what went wrong.
// Everything that comes from requests is put into the page as text, never as markup.

const byId = (id) => document.getElementById(id);
const mostRecords = 500;
const records = new Map(); // the list items by the records' numbers
let named = [];
let shownCode = '';
let violations = 0;
let last = 0;

function element(tag, text, className) {
  const made = document.createElement(tag);
  if (text !== undefined) made.textContent = text;
  if (className) made.className = className;
  return made;
}

function button(text, label, action, className) {
  const made = element('button', text, className);
  made.type = 'button';
  made.setAttribute('aria-label', label);
  made.addEventListener('click', action);
  return made;
}

// Replaces the rows of a list. The focus stays on the button with the same label.
function replaceRows(list, rows) {
  const label = list.contains(document.activeElement) ? document.activeElement.getAttribute('aria-label') : null;
  list.replaceChildren(...rows);
  for (const each of list.querySelectorAll('button')) {
    if (each.getAttribute('aria-label') === label) each.focus();
  }
}

async function ask(path, method = 'GET', body = undefined) {
  const headers = body === undefined ? {} : {'Content-Type': 'application/json'};
  const answer = await fetch(path, {method, headers, body: body === undefined ? undefined : JSON.stringify(body)});
  const json = await answer.json();
  if (!answer.ok) throw new Error(json.error);
  return json;
}

// Runs an action of the person, and tells why it failed.
async function attempt(action) {
  byId('problem').textContent = '';
  try {
    await action();
    return true;
  } catch (error) {
    byId('problem').textContent = error instanceof TypeError ? 'The simulator does not answer.' : error.message;
    return false;
  }
}

const timeOf = (text) => new Date(text).toLocaleTimeString('en-GB', {hour12: false}) + text.slice(19, 23);

function showService(service) {
  byId('join-page').textContent = service.joinPage;
  byId('certificate').textContent = service.certificate;
  byId('pin').textContent = service.pins.leaf;
}

function showCodes({codes}) {
  if (!codes.includes(shownCode)) shownCode = codes[0] ?? '';
  replaceRows(byId('codes'), codes.map((code) => {
    const row = element('li');
    const show = button('Show', `Show the picture of ${code}`, () => { shownCode = code; showCodes({codes}); }, 'quiet');
    show.setAttribute('aria-pressed', String(code === shownCode));
    const line = element('span', undefined, 'line');
    line.append(show, button('Remove', `Remove the code ${code}`, () => attempt(async () => {
      await ask(`codes/${encodeURIComponent(code)}`, 'DELETE');
      byId('new-code').focus();
    }), 'quiet'));
    row.append(element('span', code, 'mono'), line);
    return row;
  }));
  byId('code').textContent = shownCode || 'nothing: no code may join';
  byId('picture').hidden = !shownCode;
  if (shownCode) {
    byId('picture').src = `codes/${encodeURIComponent(shownCode)}/picture.svg`;
    byId('picture').alt = `QR picture of the activation code ${shownCode}`;
  }
}

function meaningOf(fault) {
  const found = named.find((each) => each.name === fault);
  return found ? `The service ${found.meaning}.` : '';
}

function showFaults({pending}) {
  replaceRows(byId('faults'), pending.map((each) => {
    const row = element('li');
    const text = element('span');
    text.append(element('strong', each.endpoint), ` ${each.fault}`,
      each.callsLeft === null ? '' : `, ${each.callsLeft} more ${each.callsLeft === 1 ? 'call' : 'calls'}`);
    row.append(text, button('Take back', `Take back ${each.fault} at ${each.endpoint}`, () => attempt(async () => {
      await ask(`faults/${each.endpoint}`, 'DELETE');
      byId('fault').focus();
    }), 'quiet'));
    return row;
  }));
}

function offerFaults(faults) {
  named = faults.named;
  const endpoint = byId('endpoint');
  if (endpoint.options.length === 0) endpoint.append(...faults.endpoints.map((each) => new Option(each)));
  byId('named-faults').replaceChildren(...named.map((each) => {
    const option = element('option');
    option.value = each.name;
    option.label = each.meaning;
    return option;
  }));
  showFaults(faults);
}

function showSessions({sessions}) {
  byId('sessions').replaceChildren(...sessions.toReversed().map((each) => {
    const row = element('tr');
    row.append(element('td', each.name, 'mono'), element('td', each.tid, 'mono'), element('td', each.interfaceVersion),
      element('td', timeOf(each.joinedAt).slice(0, 8)));
    return row;
  }));
}

function detailOf(record) {
  const detail = element('div', undefined, 'detail');
  const part = (title, text) => detail.append(element('h3', title), element('pre', text));
  part('Request', `${record.method} ${record.path}\n`
    + record.headers.map((each) => `${each.name}: ${each.value}`).join('\n'));
  part(`Body, ${record.bodyBytes} bytes`, record.body || '(empty)');
  part('Answer', record.status === null ? '(withheld)' : record.answer || '(empty)');
  return detail;
}

function itemOf(record) {
  const item = element('li', undefined, record.violation === null ? '' : 'breach');
  const details = element('details');
  const summary = element('summary');
  const isGood = record.status !== null && record.status < 300;
  summary.append(element('span', timeOf(record.receivedAt), 'mono'), element('span', record.endpoint ?? '?', 'endpoint'),
    element('span', record.status ?? 'none', isGood ? 'good' : 'bad'),
    element('span', [record.endpoint === null && record.path, record.session, record.fault && `fault ${record.fault}`]
      .filter(Boolean).join(', '), 'more'));
  if (record.violation !== null) summary.append(element('span', `Breaks the protocol: ${record.violation}`, 'violation'));
  details.append(summary);
  details.addEventListener('toggle', () => {
    if (details.open && details.childElementCount === 1) details.append(detailOf(record));
  });
  item.append(details);
  return item;
}

function showCount() {
  const only = byId('only-breaches').checked;
  for (const item of byId('records').children) item.hidden = only && item.className !== 'breach';
  byId('none').hidden = records.size > 0;
  byId('count').textContent = `${last} so far, ${violations} with a breach`;
}

function addRecord(record) {
  if (records.has(record.number)) return;
  const item = itemOf(record);
  records.set(record.number, item);
  byId('records').prepend(item);
  if (records.size > mostRecords) {
    const oldest = Math.min(...records.keys());
    records.get(oldest).remove();
    records.delete(oldest);
  }
}

// Events may bring later records than the list that was asked for before.
function showRecords(all) {
  const later = [...records.keys()].filter((number) => number > all.last);
  all.records.forEach(addRecord);
  byId('records').replaceChildren(...[...records].sort(([one], [other]) => other - one).map(([, item]) => item));
  violations = all.violations + later.filter((number) => records.get(number).className === 'breach').length;
  last = Math.max(all.last, ...later);
  showCount();
}

function forgetRecords(all) {
  records.clear();
  showRecords(all);
}

function showState(state, text) {
  byId('state').dataset.state = state;
  byId('state').textContent = text;
}

async function showAll() {
  const [service, codes, faults, sessions, all] =
    await Promise.all(['service', 'codes', 'faults', 'sessions', 'records'].map((path) => ask(path)));
  showService(service);
  showCodes(codes);
  offerFaults(faults);
  showSessions(sessions);
  showRecords(all);
}

// The browser itself comes back when the connection ends; what has happened meanwhile is asked for.
function listen() {
  const source = new EventSource('events');
  const on = (name, action) => source.addEventListener(name, (event) => action(JSON.parse(event.data)));
  source.addEventListener('open', () => attempt(async () => {
    records.clear(); // perhaps another run of the program
    await showAll();
    showState('live', 'Live');
  }));
  source.addEventListener('error', () => {
    showState('lost', 'No connection; trying again');
    // After a refusal the browser gives up.
    if (source.readyState === EventSource.CLOSED) setTimeout(listen, 2000);
  });
  on('request', (record) => {
    if (record.number > last) {
      last = record.number;
      violations += record.violation === null ? 0 : 1;
    }
    addRecord(record);
    showCount();
    if (record.fault !== null) attempt(async () => showFaults(await ask('faults')));
  });
  on('faults', showFaults);
  on('codes', showCodes);
  on('sessions', showSessions);
  on('cleared', forgetRecords);
  on('lost', () => attempt(showAll));
}

byId('add-code').addEventListener('submit', (event) => {
  event.preventDefault();
  const code = byId('new-code').value;
  attempt(async () => {
    await ask('codes', 'POST', {code});
    byId('new-code').value = '';
    shownCode = code;
    showCodes(await ask('codes'));
  });
});

byId('add-fault').addEventListener('submit', (event) => {
  event.preventDefault();
  const choice = {fault: byId('fault').value};
  if (byId('calls').value) choice.calls = Number(byId('calls').value);
  attempt(() => ask(`faults/${byId('endpoint').value}`, 'PUT', choice));
});

byId('fault').addEventListener('input', () => { byId('meaning').textContent = meaningOf(byId('fault').value); });
byId('clear-faults').addEventListener('click', () => attempt(() => ask('faults', 'DELETE')));
byId('clear-records').addEventListener('click', () => attempt(() => ask('records', 'DELETE')));
byId('only-breaches').addEventListener('change', showCount);

listen();
