'use strict';
// The page of a dump. Its data are columns with one entry an event; texts are held once and
// referred to by number. Whatever comes from a dump reaches the document as text nodes only.
(() => {
const rowHeight = 48;
const bins = 160;
const valuesAtFirst = 20;  // of a group in the rail
const severities = ['mismatch', 'suspicion', 'note'];
const changes = ['unchanged', 'changed', 'new', 'gone'];
const rowFields = 5;      // label, what the event says, what memory holds, line, what it was
const findingFields = 4;  // kind, row, text, line

const byId = (id) => document.getElementById(id);
const make = (name, className, ...children) => {
    const element = document.createElement(name);
    if (className) element.className = className;
    element.append(...children);
    return element;
};

async function unpacked(id) {
    const packed = atob(byId(id).textContent.trim());
    const bytes = new Uint8Array(packed.length);
    for (let i = 0; i < packed.length; ++i) bytes[i] = packed.charCodeAt(i);
    const stream = new Blob([bytes]).stream().pipeThrough(new DecompressionStream('gzip'));
    return new Uint8Array(await new Response(stream).arrayBuffer());
}

let data;
let count = 0;
let lowered = null;   // each text in lower case, made at the first search
let rawBytes = null;  // of all files, unpacked at the first use
let worst;            // of each event: the least number of a finding's severity
let shown = [];       // the events that pass all filters, in order
let chosen = -1;      // an event
const marked = new Set();

const text = (number) => data.texts[number];
const findingsOf = (event) => {
    const flat = data.findings[event], list = [];
    for (let i = 0; i < flat.length; i += findingFields)
        list.push({kind: flat[i], row: flat[i + 1], text: flat[i + 2], line: flat[i + 3]});
    return list;
};
const severityOf = (kind) => severities[data.kinds[kind][1]];
const iso = (seconds) => {
    if (seconds === null) return 'no charging start';
    const date = new Date(seconds * 1000);
    return isNaN(date) ? String(seconds) : date.toISOString().replace('.000Z', 'Z');
};

// --- Filters: an event passes when every group does. ---

const filter = {words: [], range: null};  // range: the first and last bin of the axis
const groups = [
    {name: 'kinds', title: 'Findings', isOpen: true, valuesOf: (event) => findingsOf(event).map((f) => f.kind),
     label: (value) => data.kinds[value][0], severity: (value) => severityOf(value),
     order: (a, b) => data.kinds[a][1] - data.kinds[b][1]},
    {name: 'changes', title: 'Changes', valuesOf: (event) => [data.change[event]],
     label: (value) => changes[value], order: (a, b) => a - b},
    {name: 'services', title: 'Services', valuesOf: (event) => [data.service[event]], label: text},
    {name: 'plans', title: 'Rate plans', valuesOf: (event) => [data.plan[event]],
     label: (value) => text(value) || 'none'},
    {name: 'files', title: 'Files', valuesOf: (event) => [data.file[event]],
     label: (value) => data.files[value], order: (a, b) => a - b},
];
const timeBit = 1 << groups.length;
const wordBit = timeBit << 1;

function prepareGroups() {
    for (const [number, group] of groups.entries()) {
        group.bit = 1 << number;
        group.chosen = new Set();
        group.values = Array.from({length: count}, (unused, event) => [...new Set(group.valuesOf(event))]);
        const totals = new Map();
        for (const values of group.values)
            for (const value of values) totals.set(value, (totals.get(value) || 0) + 1);
        group.all = [...totals.keys()].sort((a, b) =>
            (group.order ? group.order(a, b) : 0) || totals.get(b) - totals.get(a) || a - b);
    }
    groups.find((group) => group.name === 'changes').hidden = !data.old;
    groups.find((group) => group.name === 'files').hidden = data.files.length < 2;
}

// Which texts hold the word: each text is lowered once, and looked at once a word.
function hitsOf(word) {
    lowered = lowered || data.texts.map((each) => each.toLowerCase());
    const hits = new Uint8Array(lowered.length);
    for (let i = 0; i < lowered.length; ++i) hits[i] = lowered[i].includes(word) ? 1 : 0;
    return hits;
}

let textsOfEvent = null;  // numbers of the texts of each event, one after the other
let textsBegin = null;
function collectTexts() {
    const all = [];
    textsBegin = new Uint32Array(count + 1);
    for (let event = 0; event < count; ++event) {
        all.push(data.customer[event], data.service[event], data.account[event], data.plan[event]);
        for (const model of data.models[event]) all.push(model);
        const rows = data.rows[event];
        for (let i = 0; i < rows.length; i += rowFields) {
            all.push(rows[i + 1], rows[i + 2]);
            if (rows[i + 4] >= 0) all.push(rows[i + 4]);
        }
        const findings = data.findings[event];
        for (let i = 0; i < findings.length; i += findingFields)
            all.push(findings[i + 2], data.kindText[findings[i]]);
        textsBegin[event + 1] = all.length;
    }
    textsOfEvent = Uint32Array.from(all);
}

function matches(event, hits) {
    for (let i = textsBegin[event]; i < textsBegin[event + 1]; ++i)
        if (hits[textsOfEvent[i]]) return true;
    return false;
}

function applyFilters() {
    if (filter.words.length && !textsOfEvent) collectTexts();
    const wordHits = filter.words.map(hitsOf);
    const bars = {all: new Uint32Array(bins), bad: new Uint32Array(bins)};
    for (const group of groups) group.counts = new Map();
    shown = [];
    for (let event = 0; event < count; ++event) {
        let fails = 0;
        for (const hits of wordHits) if (!matches(event, hits)) { fails |= wordBit; break; }
        const start = data.start[event], bin = start === null ? -1 : axis.bin(start);
        if (filter.range && (bin < filter.range[0] || bin > filter.range[1])) fails |= timeBit;
        for (const group of groups)
            if (group.chosen.size && !group.values[event].some((value) => group.chosen.has(value)))
                fails |= group.bit;
        if (!fails) shown.push(event);
        if (!(fails & ~timeBit) && bin >= 0) {
            ++bars.all[bin];
            if (worst[event] === 0) ++bars.bad[bin];
        }
        for (const group of groups)
            if (!(fails & ~group.bit))
                for (const value of group.values[event])
                    group.counts.set(value, (group.counts.get(value) || 0) + 1);
    }
    drawRail();
    axis.draw(bars);
    byId('count').textContent = shown.length === count
        ? `${count} ${count === 1 ? 'event' : 'events'}` : `${shown.length} of ${count} events`;
    byId('clear').hidden = !filter.words.length && !filter.range && !groups.some((g) => g.chosen.size);
    byId('space').style.height = `${shown.length * rowHeight}px`;
    if (!shown.includes(chosen)) choose(shown.length ? shown[0] : -1, true);
    else scrollToChosen();
    drawList();
    drawCard();
}

function clearFilters() {
    byId('search').value = '';
    filter.words = [];
    filter.range = null;
    for (const group of groups) group.chosen.clear();
    applyFilters();
}

// --- The rail ---

function drawRail() {
    const rail = byId('rail'), focused = document.activeElement?.dataset?.value;
    const at = rail.scrollTop;
    rail.replaceChildren();
    for (const group of groups) {
        if (group.hidden || !group.all.length) continue;
        rail.append(make('h2', '', group.title));
        const values = group.isOpen ? group.all
            : group.all.filter((value, i) => i < valuesAtFirst || group.chosen.has(value));
        for (const value of values) {
            const events = group.counts.get(value) || 0;
            const button = make('button', events ? '' : 'empty',
                                make('span', '', group.label(value)), make('span', '', String(events)));
            if (group.severity) {
                button.classList.add(group.severity(value));
                button.title = data.kinds[value][2];
            }
            button.type = 'button';
            button.dataset.value = `${group.name} ${value}`;
            button.setAttribute('aria-pressed', group.chosen.has(value));
            button.addEventListener('click', () => {
                if (!group.chosen.delete(value)) group.chosen.add(value);
                applyFilters();
            });
            rail.append(button);
            if (button.dataset.value === focused) button.focus({preventScroll: true});
        }
        if (values.length < group.all.length) {
            const more = make('button', 'more', `${group.all.length - values.length} more …`);
            more.type = 'button';
            more.addEventListener('click', () => { group.isOpen = true; drawRail(); });
            rail.append(more);
        }
    }
    rail.scrollTop = at;
}

// --- The time axis ---

const axis = {
    first: 0, last: 1,
    from: 0, to: 0,  // the bins of the range as they were chosen, from the left or the right
    prepare() {
        this.first = Infinity;
        this.last = -Infinity;
        for (const start of data.start)
            if (start) { this.first = Math.min(this.first, start); this.last = Math.max(this.last, start); }
        this.isKnown = this.first <= this.last;
        if (!this.isKnown) { this.first = 0; this.last = 1; }
        byId('axis').hidden = !this.isKnown;
        byId('first').textContent = iso(this.first);
        byId('last').textContent = iso(this.last);
    },
    bin(start) {
        const share = (start - this.first) / Math.max(1, this.last - this.first);
        return Math.max(0, Math.min(bins - 1, Math.floor(share * bins)));
    },
    timeOf(bin) { return this.first + bin / bins * (this.last - this.first); },
    draw(bars) {
        const svg = byId('bars'), names = 'http://www.w3.org/2000/svg';
        const most = Math.max(1, ...bars.all);
        svg.setAttribute('viewBox', `0 0 ${bins} 100`);
        svg.replaceChildren();
        const rectangle = (className, x, width, height) => {
            const element = document.createElementNS(names, 'rect');
            for (const [name, value] of Object.entries(
                {class: className, x, y: 100 - height, width, height}))
                element.setAttribute(name, value);
            svg.append(element);
        };
        for (let bin = 0; bin < bins; ++bin) {
            if (!bars.all[bin]) continue;
            rectangle('all', bin + 0.1, 0.8, Math.max(4, 100 * bars.all[bin] / most));
            if (bars.bad[bin]) rectangle('bad', bin + 0.1, 0.8, Math.max(8, 100 * bars.bad[bin] / most));
        }
        if (filter.range) {
            const [from, to] = filter.range;
            rectangle('range', from, to - from + 1, 100);
        }
        byId('axis-text').textContent = filter.range
            ? `${iso(Math.round(this.timeOf(filter.range[0])))} to ${iso(Math.round(this.timeOf(filter.range[1] + 1)))}`
            : 'events by charging start, those with a mismatch marked; drag to choose a time';
    },
    choose(from, to) {
        this.from = from;
        this.to = to;
        filter.range = from <= to ? [from, to] : [to, from];
        applyFilters();
    },
    listen() {
        const svg = byId('bars');
        svg.setAttribute('tabindex', '0');
        svg.setAttribute('aria-label', 'Time axis; arrow keys choose a time, with Shift a longer one');
        const binAt = (event) => {
            const box = svg.getBoundingClientRect();
            return Math.max(0, Math.min(bins - 1, Math.floor((event.clientX - box.left) / box.width * bins)));
        };
        let from = null;
        svg.addEventListener('pointerdown', (event) => {
            from = binAt(event);
            svg.setPointerCapture(event.pointerId);
        });
        svg.addEventListener('pointermove', (event) => { if (from !== null) this.choose(from, binAt(event)); });
        svg.addEventListener('pointerup', (event) => {
            if (from !== null && binAt(event) === from && filter.range) filter.range = null;
            else if (from !== null) { this.choose(from, binAt(event)); }
            from = null;
            applyFilters();
        });
        svg.addEventListener('keydown', (event) => {
            const step = {ArrowLeft: -1, ArrowRight: 1}[event.key];
            if (!step) return;
            event.preventDefault();
            const end = filter.range ? this.to : step > 0 ? -1 : bins;
            const moved = Math.max(0, Math.min(bins - 1, end + step));
            this.choose(event.shiftKey && filter.range ? this.from : moved, moved);
        });
    },
};

// --- The list: only rows that can be seen are made. ---

function drawList() {
    const list = byId('list'), space = byId('space');
    const first = Math.max(0, Math.floor(list.scrollTop / rowHeight) - 4);
    const last = Math.min(shown.length, Math.ceil((list.scrollTop + list.clientHeight) / rowHeight) + 4);
    const rows = [];
    for (let i = first; i < last; ++i) rows.push(makeRow(shown[i], i));
    if (!shown.length) rows.push(make('div', 'nothing', 'No event matches.'));
    space.replaceChildren(...rows);
}

function makeRow(event, position) {
    const row = make('div', 'row');
    row.id = `event-${event}`;
    row.setAttribute('role', 'option');
    row.setAttribute('aria-selected', event === chosen);
    row.setAttribute('aria-posinset', position + 1);
    row.setAttribute('aria-setsize', shown.length);
    row.style.top = `${position * rowHeight}px`;
    if (event === chosen) row.classList.add('chosen');
    if (marked.has(event)) row.classList.add('marked');
    const top = make('div', '', make('span', '', `${text(data.customer[event])} ${text(data.service[event])}`));
    const findings = findingsOf(event);
    if (worst[event] < severities.length) {
        const severity = severities[worst[event]];
        row.classList.add(severity);
        const kinds = [...new Set(findings.filter((f) => data.kinds[f.kind][1] === worst[event]).map((f) => f.kind))];
        const more = new Set(findings.map((f) => f.kind)).size - 1;
        top.append(make('span', `kind ${severity}`, data.kinds[kinds[0]][0] + (more ? ` +${more}` : '')));
    }
    const second = make('div', 'second', make('span', '',
        `${iso(data.start[event])} ${[text(data.plan[event]), ...data.models[event].map(text)].join(' ')}`));
    if (data.change[event]) second.append(make('span', 'change', changes[data.change[event]]));
    row.append(top, second);
    row.addEventListener('click', () => choose(event));
    return row;
}

function scrollToChosen() {
    const list = byId('list'), position = shown.indexOf(chosen);
    if (position < 0) return;
    const top = position * rowHeight;
    if (top < list.scrollTop) list.scrollTop = top;
    else if (top + rowHeight > list.scrollTop + list.clientHeight)
        list.scrollTop = top + rowHeight - list.clientHeight;
}

function choose(event, isQuiet) {
    chosen = event;
    byId('list').setAttribute('aria-activedescendant', event < 0 ? '' : `event-${event}`);
    if (isQuiet) return;
    history.replaceState(null, '', `#event=${event}`);
    scrollToChosen();
    drawList();
    drawCard();
}

function move(by, isWanted) {
    let position = shown.indexOf(chosen) + by;
    while (isWanted && position >= 0 && position < shown.length && !isWanted(shown[position])) position += Math.sign(by);
    if (isWanted && (position < 0 || position >= shown.length)) return;
    position = Math.max(0, Math.min(shown.length - 1, position));
    if (shown.length) choose(shown[position]);
}

// --- The card of an event ---

// Lines don't end within a time, whose hyphens permit it.
const withWholeTimes = (content) => content.split(/(\d{4}-\d\d-\d\d[T\d:]*Z?)/)
    .map((part, i) => i % 2 ? make('span', 'time', part) : part);

// The text with the words that are searched for marked.
function highlighted(content) {
    const parts = [], lower = content.toLowerCase();
    let at = 0;
    while (filter.words.length && lower.length === content.length) {
        let next = -1, length = 0;
        for (const word of filter.words) {
            const found = lower.indexOf(word, at);
            if (found >= 0 && (next < 0 || found < next)) { next = found; length = word.length; }
        }
        if (next < 0) break;
        if (next > at) parts.push(...withWholeTimes(content.slice(at, next)));
        parts.push(make('mark', '', content.slice(next, next + length)));
        at = next + length;
    }
    parts.push(...withWholeTimes(content.slice(at)));
    return parts;
}

function spanning(className, ...children) {
    const cell = make('td', '', make('div', '', ...children));
    cell.colSpan = 2;
    return make('tr', className, make('th', ''), cell);
}

function findingRow(finding) {
    const [name, , sentence] = data.kinds[finding.kind];
    return spanning(`finding ${severityOf(finding.kind)}`,
        make('span', 'why', make('b', '', ...highlighted(name)), ' ', ...highlighted(text(finding.text)),
             make('span', 'sentence', sentence)),
        make('span', 'line', `line ${finding.line}`));
}

function factTable(event) {
    const rows = data.rows[event], findings = findingsOf(event);
    const table = make('table', 'facts');
    table.append(make('colgroup', '', make('col', 'label'), make('col', 'said'), make('col')));
    table.append(make('thead', '', make('tr', '', make('th', '', ''), make('th', '', 'The event says'),
                                        make('th', '', 'Memory holds'))));
    const body = make('tbody');
    const isWithoutRow = (finding) => finding.row < 0 || finding.row * rowFields >= rows.length;
    for (const finding of findings.filter(isWithoutRow)) body.append(findingRow(finding));
    for (let i = 0; i < rows.length; i += rowFields) {
        const row = make('tr', '', make('th', '', text(rows[i])),
                         make('td', '', ...highlighted(text(rows[i + 1]))),
                         make('td', '', ...highlighted(text(rows[i + 2]))));
        row.title = `line ${rows[i + 3]}`;
        body.append(row);
        if (rows[i + 4] >= 0) {
            const change = spanning('was', make('span', 'change', 'was: '), ...highlighted(text(rows[i + 4])));
            body.append(change);
        }
        for (const finding of findings)
            if (finding.row === i / rowFields) body.append(findingRow(finding));
    }
    table.append(body);
    return table;
}

function headOf(event) {
    const change = data.change[event];
    return [
        make('div', 'head', make('h2', '', ...highlighted(text(data.customer[event]))),
             make('span', 'service', ...highlighted(text(data.service[event]))),
             ...(change ? [make('span', 'change', changes[change])] : [])),
        make('p', 'place', `Charging start ${iso(data.start[event])}` +
             `${data.start[event] === null ? '' : ` (${data.start[event]})`} · ` +
             `${data.files[data.file[event]] || ''} event ${data.number[event]}, line ${data.line[event]}`),
    ];
}

async function rawOf(event) {
    rawBytes = rawBytes || unpacked('raw');
    const [begin, length] = [data.raw[2 * event], data.raw[2 * event + 1]];
    return new TextDecoder().decode((await rawBytes).subarray(begin, begin + length));
}

let isRawOpen = false;
function drawCard() {
    const card = byId('card');
    if (chosen < 0) { card.replaceChildren(make('p', 'nothing', count ? 'No event matches.' : 'The dump has no events.')); return; }
    const raw = make('details', '', make('summary', '', 'Text of the event as it stands ( r )'));
    const shownEvent = chosen;
    raw.addEventListener('toggle', async () => {
        isRawOpen = raw.open;
        if (raw.open && raw.children.length === 1) {
            const pre = make('pre', '');
            raw.append(pre);
            pre.append(...highlighted(await rawOf(shownEvent)));
        }
    });
    card.replaceChildren(...headOf(chosen), factTable(chosen), raw);
    raw.open = isRawOpen;
    card.scrollTop = 0;
}

// --- Printing: the marked events, or the one that is shown. ---

function preparePaper() {
    const events = marked.size ? [...marked].sort((a, b) => a - b) : chosen < 0 ? [] : [chosen];
    byId('paper').replaceChildren(...events.map((event) =>
        make('section', 'event', ...headOf(event), factTable(event))));
}

// --- Keys ---

const toggleMark = () => {
    if (chosen < 0) return;
    if (!marked.delete(chosen)) marked.add(chosen);
    drawList();
};
const visibleRows = () => Math.max(1, Math.floor(byId('list').clientHeight / rowHeight) - 1);
const openHelp = () => byId('keys').showModal();
const toggleTheme = () => {
    const root = document.documentElement;
    root.dataset.theme = root.dataset.theme === 'dark' ? 'light' : 'dark';
};
const keys = [
    [['/'], 'search', () => byId('search').select()],
    [['j', 'ArrowDown'], 'next event', () => move(1)],
    [['k', 'ArrowUp'], 'previous event', () => move(-1)],
    [['PageDown'], 'a page on', () => move(visibleRows())],
    [['PageUp'], 'a page back', () => move(-visibleRows())],
    [['Home'], 'first event', () => move(-count)],
    [['End'], 'last event', () => move(count)],
    [['n'], 'next event with a mismatch', () => move(1, (event) => worst[event] === 0)],
    [['p'], 'previous event with a mismatch', () => move(-1, (event) => worst[event] === 0)],
    [['Enter'], 'to the card of the event', () => byId('card').focus()],
    [['x', ' '], 'mark or unmark the event for printing', toggleMark],
    [['r'], 'show or hide the text of the event', () => {
        const raw = byId('card').querySelector('details');
        if (raw) raw.open = !raw.open;
    }],
    [['t'], 'light or dark', toggleTheme],
    [['c', 'Escape'], 'clear all filters', clearFilters],
    [['?'], 'these keys', openHelp],
];

function listenToKeys() {
    for (const [names, meaning] of keys)
        byId('key-table').append(make('tr', '', make('td', '', ...names.flatMap((name, i) =>
            [...(i ? [' '] : []), make('kbd', '', name === ' ' ? 'Space' : name)])), make('td', '', meaning)));
    document.addEventListener('keydown', (event) => {
        if (event.ctrlKey || event.metaKey || event.altKey || byId('keys').open) return;
        const inSearch = event.target === byId('search');
        if (inSearch) {
            if (event.key === 'ArrowDown' || event.key === 'Enter') { byId('list').focus(); event.preventDefault(); }
            else if (event.key === 'Escape') { clearFilters(); event.preventDefault(); }
            return;
        }
        // Buttons, the summary and the axis have keys of their own, and a focused card scrolls.
        const isOwn = event.target.closest('button, summary, svg') && /^(Enter| |Arrow.*)$/.test(event.key);
        const isScrolling = event.target.closest('#card') && /^(Arrow.*|Page.*|Home|End)$/.test(event.key);
        const key = keys.find(([names]) => names.includes(event.key));
        if (!key || isOwn || isScrolling) return;
        event.preventDefault();
        key[2]();
    });
}

function listen() {
    let pending = 0;
    byId('search').addEventListener('input', () => {
        cancelAnimationFrame(pending);
        pending = requestAnimationFrame(() => {
            filter.words = byId('search').value.toLowerCase().split(/\s+/).filter(Boolean);
            applyFilters();
        });
    });
    byId('list').addEventListener('scroll', drawList, {passive: true});
    addEventListener('resize', drawList);
    addEventListener('beforeprint', preparePaper);
    byId('clear').addEventListener('click', clearFilters);
    byId('print').addEventListener('click', () => print());
    byId('theme').addEventListener('click', toggleTheme);
    byId('help').addEventListener('click', openHelp);
    axis.listen();
    listenToKeys();
}

async function start() {
    document.documentElement.dataset.theme =
        matchMedia('(prefers-color-scheme: dark)').matches ? 'dark' : 'light';
    data = JSON.parse(new TextDecoder().decode(await unpacked('data')));
    count = data.number.length;
    data.kindText = data.kinds.map(([name]) => data.texts.push(name) - 1);
    worst = new Uint8Array(count).fill(severities.length);
    for (let event = 0; event < count; ++event)
        for (const finding of findingsOf(event))
            worst[event] = Math.min(worst[event], data.kinds[finding.kind][1]);
    prepareGroups();
    axis.prepare();
    listen();
    const asked = /^#event=(\d+)$/.exec(location.hash);
    chosen = asked && +asked[1] < count ? +asked[1] : -1;
    applyFilters();
    byId('list').focus();
    document.documentElement.dataset.ready = 'true';
}
start();
})();
