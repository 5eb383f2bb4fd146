
"use strict";

// Shows the tokens that are in the script elements of the page.
//
// The text of the document is one string, `tokens.text`. A token is a range of it, and a row of the
// screen is one too; a row belongs to one line of the document, and a long line has several. Only
// the rows on the screen are in the document of the browser. Text gets there by `textContent` and
// nothing else, so that no markup of the input is ever read as markup.

const ROW_HEIGHT = 20;
const LEAST_ROW_LENGTH = 40;
const ROW_MARGIN = 24;
const ROWS_AROUND = 10;
const MOST_PIXELS = 8000000;  // browsers cut elements that are much higher
const MOST_MATCHES = 100000;
const MOST_SHOWN_ATTRIBUTES = 200;
const MOST_SHOWN_TEXT = 2000;

const OPEN = 1;
const FOLDED = 2;
const UNDECODABLE = 4;
const ESCAPES = 8;

const KIND_TITLES = {
    "text": "text", "c-comment": "block comment", "cpp-comment": "line comment",
    "s-string": "string in '", "d-string": "string in \"", "start": "start tag", "short": "short tag",
    "end": "end tag", "cdata": "CDATA section", "conditional": "conditional section",
    "comment": "comment", "entity": "declaration", "extern": "instruction", "junk": "junk",
    "mark": "byte-order mark", "lost": "in no token",
};

const element = (id) => document.getElementById(id);

/** Makes an element; what it contains is a text, an element, or a list of both. */
function make(name, className, contents = []) {
    const made = document.createElement(name);
    if (className)
        made.className = className;
    made.append(...[].concat(contents));
    return made;
}

// The document.

function readJson(script) {
    const value = JSON.parse(script.textContent);
    script.remove();  // its text is not needed twice
    return value;
}

/** All tokens, one array for each property, so that a million of them fits. */
class Tokens {
    constructor(parts) {
        this.count = parts.reduce((sum, part) => sum + part.kinds.length, 0);
        this.kind = new Uint8Array(this.count);
        this.mark = new Uint8Array(this.count);
        this.line = new Float64Array(this.count);
        this.column = new Float64Array(this.count);
        this.begin = new Float64Array(this.count + 1);  // in bytes
        this.start = new Uint32Array(this.count + 1);   // in characters of the text
        this.parts = new Array(this.count);
        this.charsets = [];  // {first, name}: from this token on
        let index = 0;
        for (const part of parts)
            index = this.add(part, index);
        this.text = parts.map((part) => part.text).join("");
    }

    add(part, first) {
        const lengths = part.lengths ?? part.sizes;
        let line = 0;
        this.charsets.push({first, name: part.charset});
        this.begin[first] = part.begin;
        part.kinds.forEach((kind, i) => {
            const index = first + i;
            this.kind[index] = kind;
            this.mark[index] = part.marks?.[i] ?? 0;
            line += part.lines[i];
            this.line[index] = line;
            this.column[index] = part.columns[i];
            this.parts[index] = part.parts[i];
            this.begin[index + 1] = this.begin[index] + part.sizes[i];
            this.start[index + 1] = this.start[index] + lengths[i];
        });
        return first + part.kinds.length;
    }

    /** The token that a character of the text belongs to. */
    at(offset) {
        return lastNotAbove(this.start, this.count, offset);
    }

    textOf(index) {
        return this.text.slice(this.start[index], this.start[index + 1]);
    }

    charsetOf(index) {
        return this.charsets[lastNotAbove(this.charsets.map((run) => run.first), this.charsets.length, index)].name;
    }

    /** The name and the attributes of a tag as ranges of the text, or null. */
    readParts(index) {
        const numbers = this.parts[index];
        if (!numbers)
            return null;
        const first = this.start[index] + numbers[0];
        const parts = {name: {from: first, to: first + numbers[1]}, attributes: [], starts: []};
        let last = parts.name.to;
        for (let i = 2; i + 4 < numbers.length; i += 5) {
            const name = {from: last + numbers[i], to: last + numbers[i] + numbers[i + 1]};
            const hasValue = numbers[i + 3] >= 0;
            const from = name.to + numbers[i + 2];
            const value = hasValue ? {from, to: from + numbers[i + 3]} : null;
            last = value ? value.to : name.to;
            parts.attributes.push({name, value, isFolded: numbers[i + 4] === 1});
            parts.starts.push(name.from);
        }
        return parts;
    }
}

/** The last index of an ascending list, of which `count` are used, whose value is not above another. */
function lastNotAbove(list, count, value) {
    let low = 0;
    let high = count - 1;
    while (low < high) {
        const middle = (low + high + 1) >> 1;
        if (list[middle] <= value)
            low = middle;
        else
            high = middle - 1;
    }
    return low;
}

const about = readJson(element("document"));
const tokens = new Tokens([...document.querySelectorAll("script.tokens")].map(readJson));
const kindOf = (name) => about.kinds.indexOf(name);
const JUNK = kindOf("junk");
const LOST = kindOf("lost");

/** What a token can be marked with; those that are problems are stepped through together. */
const MARKS = [
    {title: "junk", isProblem: true, has: (index) => tokens.kind[index] === JUNK},
    {title: "not closed", isProblem: true, has: (index) => (tokens.mark[index] & OPEN) !== 0},
    {title: "not of the charset", isProblem: true, has: (index) => (tokens.mark[index] & UNDECODABLE) !== 0},
    {title: "in no token", isProblem: true, has: (index) => tokens.kind[index] === LOST},
    {title: "folded attributes", isProblem: false, has: (index) => (tokens.mark[index] & FOLDED) !== 0},
    {title: "escape sequences", isProblem: false, has: (index) => (tokens.mark[index] & ESCAPES) !== 0},
];

const isProblem = (index) => MARKS.some((mark) => mark.isProblem && mark.has(index));

function listTokens(has) {
    const list = [];
    for (let index = 0; index < tokens.count; ++index) {
        if (has(index))
            list.push(index);
    }
    return list;
}

for (const mark of MARKS)
    mark.list = listTokens(mark.has);
const problems = listTokens(isProblem);

// What is visible.

const state = {
    visible: about.kinds.map(() => true),
    rows: {start: [0], end: [0], line: [1], isAfterGap: [false]},
    chosen: -1,
    hovered: -1,
    query: "",
    matches: [],
    match: -1,
};

const isVisible = (index) => state.visible[tokens.kind[index]];

/** How many columns a character takes, about. */
function widthOf(unit) {
    if (unit === 9)
        return 4;
    return unit >= 0x1100 && (unit < 0xD800 || unit > 0xDFFF) ? 2 : 1;
}

/** The columns that a row can have without being cut at the edge of the view. */
function rowLength() {
    const probe = make("div", "row", [make("span", "line"), make("span", "", "0".repeat(100))]);
    rowsElement.append(probe);
    const [line, digits] = [...probe.children].map((part) => part.getBoundingClientRect());
    probe.remove();
    const room = view.clientWidth - (digits.left - line.left) - ROW_MARGIN;
    return Math.max(LEAST_ROW_LENGTH, Math.floor(room / (digits.width / 100)));
}

/** Cuts the visible tokens into rows. */
class RowMaker {
    constructor() {
        this.length = rowLength();
        this.rows = {start: [], end: [], line: [], isAfterGap: []};
        this.line = 1;
        this.isOpen = false;
        this.isAfterGap = false;
        this.width = 0;
        this.nextBreak = tokens.text.indexOf("\n");
    }

    open(offset) {
        this.rows.start.push(offset);
        this.rows.end.push(offset);
        this.rows.line.push(this.line);
        this.rows.isAfterGap.push(this.isAfterGap);
        this.isOpen = true;
        this.isAfterGap = false;
        this.width = 0;
    }

    close(offset) {
        if (this.isOpen)
            this.rows.end[this.rows.end.length - 1] = offset;
        this.isOpen = false;
    }

    add(from, to) {
        const text = tokens.text;
        for (let offset = from; offset < to; ++offset) {
            const unit = text.charCodeAt(offset);
            const isSecondHalf = unit >= 0xDC00 && unit <= 0xDFFF;
            if (this.isOpen && this.width >= this.length && !isSecondHalf && unit !== 10)
                this.close(offset);
            if (!this.isOpen)
                this.open(offset);
            this.width += widthOf(unit);
            if (unit === 10) {
                this.close(offset + 1);
                ++this.line;
            }
        }
    }

    skip(from, to) {
        this.close(from);
        this.isAfterGap = this.rows.start.length > 0;
        if (this.nextBreak !== -1 && this.nextBreak < from)
            this.nextBreak = tokens.text.indexOf("\n", from);
        for (; this.nextBreak !== -1 && this.nextBreak < to; this.nextBreak = tokens.text.indexOf("\n", this.nextBreak + 1))
            ++this.line;
    }
}

function makeRows() {
    const maker = new RowMaker();
    let index = 0;
    while (index < tokens.count) {
        const shows = isVisible(index);
        let after = index + 1;
        while (after < tokens.count && isVisible(after) === shows)
            ++after;
        if (shows)
            maker.add(tokens.start[index], tokens.start[after]);
        else
            maker.skip(tokens.start[index], tokens.start[after]);
        index = after;
    }
    maker.close(tokens.text.length);
    state.rows = maker.rows;
}

const rowAt = (offset) => lastNotAbove(state.rows.start, state.rows.start.length, offset);

// The rows on the screen.

const view = element("view");
const spacer = element("spacer");
const rowsElement = element("rows");

/** The height of all rows, and of the element that has their place, which can be less. */
function heights() {
    const all = state.rows.start.length * ROW_HEIGHT;
    return {all, element: Math.min(all, MOST_PIXELS), screen: view.clientHeight};
}

/** How many pixels of the rows one pixel of the scroll bar is. */
function scale() {
    const height = heights();
    const room = height.element - height.screen;
    return room > 0 ? (height.all - height.screen) / room : 1;
}

const topPixel = () => view.scrollTop * scale();

/** Characters that would not be seen, or would change how others are seen, are shown by their code. */
const UNSEEN = new RegExp("[\\u0000-\\u0008\\u000b\\u000c\\u000e-\\u001f\\u007f-\\u009f\\u00ad\\u061c\\u115f\\u1160\\u180e" +
    "\\u200b-\\u200f\\u2028-\\u202e\\u2060-\\u206f\\u3164\\ufeff\\ufff0-\\ufffb\\ufffe\\uffff]" +
    "|\\r(?!\\n)|[\\ud800-\\udbff](?![\\udc00-\\udfff])|(?<![\\ud800-\\udbff])[\\udc00-\\udfff]", "g");

function codeOf(character) {
    return "U+" + character.charCodeAt(0).toString(16).toUpperCase().padStart(4, "0");
}

/** Appends a text, line feeds and unseen characters as signs. */
function appendText(parent, text, showsBreaks) {
    let last = 0;
    for (const found of text.matchAll(UNSEEN)) {
        parent.append(text.slice(last, found.index), make("span", "code", codeOf(found[0])));
        last = found.index + 1;
    }
    const rest = text.slice(last);
    if (showsBreaks && rest.endsWith("\n"))
        parent.append(rest.slice(0, -1), make("span", "break", "\u21b5"));
    else
        parent.append(rest);
}

/** What is marked in a part of a token: ranges of the text with the class of each. */
function rangesOf(index, from, to) {
    const ranges = [];
    const add = (range, className) => {
        if (range && range.from < to && range.to > from)
            ranges.push({from: range.from, to: range.to, className});
    };
    const parts = partsOf(index);
    if (parts) {
        add(parts.name, "name");
        // Those before and after the part are passed over: a tag may have very many.
        let i = lastNotAbove(parts.starts, parts.starts.length, from);
        for (; i < parts.attributes.length && parts.starts[i] < to; ++i) {
            const attribute = parts.attributes[i];
            add(attribute.name, attribute.isFolded ? "attribute folded" : "attribute");
            add(attribute.value, attribute.isFolded ? "value folded" : "value");
        }
    }
    for (const match of matchesWithin(from, to))
        add({from: state.matches[match], to: state.matches[match] + state.query.length},
            match === state.match ? "match current" : "match");
    return ranges;
}

/** A tag can be on many rows. */
const lastParts = {index: -1, parts: null};

function partsOf(index) {
    if (lastParts.index !== index) {
        lastParts.index = index;
        lastParts.parts = tokens.readParts(index);
    }
    return lastParts.parts;
}

/** The positions in the list of matches of those that have a character of a range. */
function matchesWithin(from, to) {
    const found = [];
    if (state.matches.length === 0)
        return found;
    let match = lastNotAbove(state.matches, state.matches.length, Math.max(0, from - state.query.length));
    for (; match < state.matches.length && state.matches[match] < to; ++match) {
        if (state.matches[match] + state.query.length > from)
            found.push(match);
    }
    return found;
}

function classOfToken(index) {
    const mark = tokens.mark[index];
    return "token kind-" + about.kinds[tokens.kind[index]] + (mark & OPEN ? " open" : "") +
        (mark & UNDECODABLE ? " undecodable" : "") + (mark & ESCAPES ? " escapes" : "") +
        (index === state.chosen ? " chosen" : "") + (index === state.hovered ? " hovered" : "");
}

/** The part of a token that is on one row. */
function makePiece(index, from, to) {
    const piece = make("span", classOfToken(index));
    piece.dataset.token = index;
    if (from === tokens.start[index]) {
        piece.id = "token-" + index;
        piece.setAttribute("role", "option");
        piece.setAttribute("aria-selected", String(index === state.chosen));
    }
    const ranges = rangesOf(index, from, to);
    const cuts = new Set([from, to]);
    for (const range of ranges) {
        cuts.add(Math.max(range.from, from));
        cuts.add(Math.min(range.to, to));
    }
    const sorted = [...cuts].sort((a, b) => a - b);
    for (let i = 0; i + 1 < sorted.length; ++i) {
        const inside = ranges.filter((range) => range.from <= sorted[i] && range.to >= sorted[i + 1]);
        const text = tokens.text.slice(sorted[i], sorted[i + 1]);
        let parent = piece;
        if (inside.length > 0) {
            parent = make("span", inside.map((range) => range.className).join(" "));
            piece.append(parent);
        }
        appendText(parent, text, true);
    }
    return piece;
}

function makeRow(row) {
    const from = state.rows.start[row];
    const to = state.rows.end[row];
    const isFirstOfLine = row === 0 || state.rows.line[row - 1] !== state.rows.line[row];
    const line = make("span", "line", isFirstOfLine || state.rows.isAfterGap[row] ? String(state.rows.line[row]) : "\u00a0");
    line.setAttribute("aria-hidden", "true");
    const made = make("div", state.rows.isAfterGap[row] ? "row gap" : "row", line);
    made.setAttribute("role", "presentation");
    let index = tokens.at(from);
    for (let offset = from; offset < to; ++index) {
        const end = Math.min(to, tokens.start[index + 1]);
        if (end > offset)
            made.append(makePiece(index, offset, end));
        offset = end;
    }
    return made;
}

let drawnRows = new Map();  // the elements in the document, by row

/** Puts the rows on the screen, and some around them, into the document. */
function draw() {
    drawnRows = new Map();
    rowsElement.replaceChildren();
    drawMissing();
}

/** The same for what scrolling has changed: rows that are there already stay. */
function drawMissing() {
    const top = topPixel();
    const count = state.rows.start.length;
    const first = Math.max(0, Math.floor(top / ROW_HEIGHT) - ROWS_AROUND);
    const end = Math.min(count, Math.ceil((top + view.clientHeight) / ROW_HEIGHT) + ROWS_AROUND);
    const rows = new Map();
    for (let row = first; row < end; ++row)
        rows.set(row, drawnRows.get(row) ?? makeRow(row));
    for (const [row, drawn] of drawnRows) {
        if (rows.get(row) !== drawn)
            drawn.remove();
    }
    let next = rowsElement.firstChild;
    for (const drawn of rows.values()) {
        if (drawn === next)
            next = next.nextSibling;
        else
            rowsElement.insertBefore(drawn, next);
    }
    drawnRows = rows;
    rowsElement.style.transform = `translateY(${view.scrollTop + first * ROW_HEIGHT - top}px)`;
    setActive();
}

let isDrawing = false;

function drawSoon() {
    if (isDrawing)
        return;
    isDrawing = true;
    requestAnimationFrame(() => {
        isDrawing = false;
        drawMissing();
    });
}

/** What is at the top stays there when the window gets another size. */
function resize() {
    const first = state.rows.start[Math.floor(topPixel() / ROW_HEIGHT)] ?? 0;
    layOut();
    view.scrollTop = rowAt(first) * ROW_HEIGHT / scale();
}

/** After a change of the rows. */
function layOut() {
    makeRows();
    spacer.style.height = heights().element + "px";
    draw();
}

function setActive() {
    const active = state.chosen >= 0 ? element("token-" + state.chosen) : null;
    if (active) {
        active.setAttribute("aria-label", describe(state.chosen));
        view.setAttribute("aria-activedescendant", active.id);
    } else {
        view.removeAttribute("aria-activedescendant");
    }
}

function scrollToRow(row) {
    const pixel = row * ROW_HEIGHT;
    const top = topPixel();
    const screen = view.clientHeight;
    const margin = Math.min(3 * ROW_HEIGHT, screen / 4);
    if (pixel < top + margin)
        view.scrollTop = (pixel - margin) / scale();
    else if (pixel + ROW_HEIGHT > top + screen - margin)
        view.scrollTop = (pixel + ROW_HEIGHT - screen + margin) / scale();
}

/** Where one pixel of the scroll bar is many, the wheel would leap. */
function turnWheel(event) {
    const ratio = scale();
    if (ratio === 1 || event.ctrlKey || event.deltaMode !== 0)
        return;
    event.preventDefault();
    view.scrollTop += event.deltaY / ratio;
}

// The panel.

function describe(index) {
    const place = tokens.line[index] > 0 ? `, line ${tokens.line[index]}, column ${tokens.column[index]}` : "";
    const parts = partsOf(index);
    const name = parts ? " " + tokens.text.slice(parts.name.from, Math.min(parts.name.to, parts.name.from + 60)) : "";
    return titleOf(index) + name + place;
}

const titleOf = (index) => KIND_TITLES[about.kinds[tokens.kind[index]]];

function makeText(range) {
    const cell = make("span");
    const to = Math.min(range.to, range.from + MOST_SHOWN_TEXT);
    appendText(cell, tokens.text.slice(range.from, to), false);
    if (to < range.to)
        cell.append("\u2026");
    return cell;
}

function addItem(list, title, contents) {
    list.append(make("dt", "", title), make("dd", "", contents));
}

function makeBadges(index) {
    const badges = make("ul", "badges");
    for (const mark of MARKS) {
        if (mark.has(index))
            badges.append(make("li", mark.isProblem ? "problem" : "note", mark.title));
    }
    return badges;
}

function makeFacts(index) {
    const list = make("dl");
    const begin = tokens.begin[index];
    const end = tokens.begin[index + 1];
    const parts = partsOf(index);
    if (parts && parts.name.to > parts.name.from)
        addItem(list, "name", makeText(parts.name));
    if (tokens.line[index] > 0)
        addItem(list, "place", `line ${tokens.line[index]}, column ${tokens.column[index]}`);
    addItem(list, "bytes", `[${begin}, ${end}), ${end - begin} in all`);
    addItem(list, "charset", tokens.charsetOf(index));
    addItem(list, "token", `${index + 1} of ${tokens.count}`);
    return list;
}

function makeAttributeRow(attribute) {
    const value = make("td", "", attribute.value ? makeText(attribute.value) : "(no value)");
    if (attribute.isFolded)
        value.append(make("small", "", "folded into the value before"));
    return make("tr", "", [make("th", "", makeText(attribute.name)), value]);
}

function makeAttributes(attributes) {
    const table = make("table", "", make("caption", "", attributes.length === 1 ? "1 attribute" : `${attributes.length} attributes`));
    table.append(...attributes.slice(0, MOST_SHOWN_ATTRIBUTES).map(makeAttributeRow));
    if (attributes.length > MOST_SHOWN_ATTRIBUTES)
        table.append(make("tr", "", make("td", "", `and ${attributes.length - MOST_SHOWN_ATTRIBUTES} more`)));
    return table;
}

function makeStepButton(title, list, direction, from) {
    const target = neighbour(list, from, direction);
    const button = make("button", "", title);
    button.type = "button";
    button.disabled = target < 0;
    button.addEventListener("click", () => goTo(target));
    return button;
}

function showPanel() {
    const index = state.hovered >= 0 ? state.hovered : state.chosen;
    const panel = element("panel");
    if (index < 0) {
        panel.replaceChildren(make("p", "", "No token."));
        return;
    }
    const swatch = make("span", "swatch kind-" + about.kinds[tokens.kind[index]]);
    const parts = partsOf(index);
    const contents = [make("h2", "", [swatch, titleOf(index)]), makeBadges(index), makeFacts(index)];
    if (parts && parts.attributes.length > 0)
        contents.push(makeAttributes(parts.attributes));
    const text = make("pre");
    text.append(makeText({from: tokens.start[index], to: tokens.start[index + 1]}));
    contents.push(text);
    if (isProblem(index))
        contents.push(make("p", "buttons", [makeStepButton("\u2039 Problem before", problems, -1, index), " ",
            makeStepButton("Next problem \u203a", problems, 1, index)]));
    panel.replaceChildren(...contents);
}

// Moving.

/** The token of an ascending list before or after another, or -1. */
function neighbour(list, index, direction) {
    if (list.length === 0)
        return -1;
    const at = lastNotAbove(list, list.length, index);
    if (direction > 0)
        return list[at] > index ? list[at] : list[at + 1] ?? -1;
    return list[at] < index ? list[at] : list[at - 1] ?? -1;
}

/** The next token in a direction that is visible and has a text, or -1. */
function visibleFrom(index, direction) {
    for (; index >= 0 && index < tokens.count; index += direction) {
        if (isVisible(index) && tokens.start[index + 1] > tokens.start[index])
            return index;
    }
    return -1;
}

function choose(index) {
    if (index < 0)
        return;
    state.chosen = index;
    state.hovered = -1;
    scrollToRow(rowAt(tokens.start[index]));
    draw();
    showPanel();
}

/** The same for a token whose kind may be hidden. */
function goTo(index) {
    if (index < 0)
        return;
    if (!isVisible(index)) {
        state.visible[tokens.kind[index]] = true;
        changeFilter();
    }
    choose(index);
}

function step(direction) {
    choose(visibleFrom(state.chosen + direction, direction));
}

/** To the token at the begin of a row some rows away, or the nearest one that is another. */
function stepRows(count) {
    const rows = state.rows.start.length;
    if (rows === 0)
        return;
    const row = rowAt(state.chosen >= 0 ? tokens.start[state.chosen] : 0);
    let target = Math.min(rows - 1, Math.max(0, row + count));
    let index = tokens.at(state.rows.start[target]);
    while (index === state.chosen && target > 0 && target < rows - 1) {
        target += Math.sign(count);
        index = tokens.at(state.rows.start[target]);
    }
    choose(index);
}

function stepProblem(direction) {
    goTo(neighbour(problems, state.chosen, direction));
}

/** A screen up or down, to the token that begins there or goes on there. */
function stepScreen(direction) {
    const count = state.rows.start.length;
    if (count === 0)
        return;
    const rows = Math.max(1, Math.floor(view.clientHeight / ROW_HEIGHT) - 2);
    view.scrollTop += direction * rows * ROW_HEIGHT / scale();
    const row = Math.min(count - 1, Math.ceil(topPixel() / ROW_HEIGHT) + 1);
    state.chosen = tokens.at(state.rows.start[row]);
    state.hovered = -1;
    draw();
    showPanel();
}

const VIEW_KEYS = {
    ArrowRight: () => step(1),
    ArrowLeft: () => step(-1),
    ArrowDown: () => stepRows(1),
    ArrowUp: () => stepRows(-1),
    PageDown: () => stepScreen(1),
    PageUp: () => stepScreen(-1),
    Home: () => choose(visibleFrom(0, 1)),
    End: () => choose(visibleFrom(tokens.count - 1, -1)),
};

const PAGE_KEYS = {
    "n": () => step(1),
    "p": () => step(-1),
    "e": () => stepProblem(1),
    "E": () => stepProblem(-1),
    "/": () => element("query").focus(),
};

function pressKey(event) {
    const isTyping = event.target === element("query");
    if (event.ctrlKey || event.altKey || event.metaKey || isTyping)
        return;
    const isInView = event.target === view || event.target === document.body;
    const action = Object.hasOwn(PAGE_KEYS, event.key) ? PAGE_KEYS[event.key] :
        isInView && Object.hasOwn(VIEW_KEYS, event.key) ? VIEW_KEYS[event.key] : null;
    if (!action)
        return;
    event.preventDefault();
    action();
}

// Searching.

function findMatches() {
    state.matches = [];
    state.match = -1;
    if (state.query === "")
        return;
    const pattern = new RegExp(state.query.replace(/[\\^$.*+?()[\]{}|\/-]/g, "\\$&"), "gi");
    for (const found of tokens.text.matchAll(pattern)) {
        if (isVisible(tokens.at(found.index)))
            state.matches.push(found.index);
        if (state.matches.length === MOST_MATCHES)
            break;
    }
}

function showMatches() {
    const count = state.matches.length;
    const all = count === MOST_MATCHES ? `${count} or more` : String(count);
    element("matches").textContent = state.query === "" ? "" : state.match >= 0 ? `${state.match + 1} of ${all}` : `${all} found`;
}

function search() {
    state.query = element("query").value;
    findMatches();
    stepMatch(1);
    showMatches();
    draw();
}

/** To the match after or before the current one, round the ends; first to the next of the chosen token. */
function stepMatch(direction) {
    const count = state.matches.length;
    if (count === 0)
        return;
    if (state.match < 0) {
        const from = state.chosen >= 0 ? tokens.start[state.chosen] : 0;
        const at = lastNotAbove(state.matches, count, from);
        state.match = state.matches[at] >= from ? at : (at + 1) % count;
    } else {
        state.match = (state.match + direction + count) % count;
    }
    state.chosen = tokens.at(state.matches[state.match]);
    state.hovered = -1;
    scrollToRow(rowAt(state.matches[state.match]));
    draw();
    showPanel();
    showMatches();
}

let searchTimer = 0;

function searchSoon() {
    clearTimeout(searchTimer);
    searchTimer = setTimeout(search, 150);
}

function pressKeyInQuery(event) {
    if (event.key === "Enter") {
        clearTimeout(searchTimer);
        if (state.query === element("query").value)
            stepMatch(event.shiftKey ? -1 : 1);
        else
            search();
    } else if (event.key === "Escape") {
        element("query").value = "";
        search();
        view.focus();
    }
}

// The outline.

function countKinds() {
    const counts = about.kinds.map(() => 0);
    for (const kind of tokens.kind)
        ++counts[kind];
    return counts;
}

function changeFilter() {
    for (const box of document.querySelectorAll("#kinds input"))
        box.checked = state.visible[Number(box.value)];
    layOut();
    findMatches();
    showMatches();
    if (state.chosen >= 0)
        scrollToRow(rowAt(tokens.start[state.chosen]));
    draw();
}

function showOnly(isShown) {
    state.visible = about.kinds.map((_, kind) => isShown(kind));
    changeFilter();
}

function makeKindItem(kind, count) {
    const box = make("input");
    box.type = "checkbox";
    box.value = kind;
    box.checked = true;
    box.addEventListener("change", () => {
        state.visible[kind] = box.checked;
        changeFilter();
    });
    const title = KIND_TITLES[about.kinds[kind]];
    const only = make("button", "", "only");
    only.type = "button";
    only.setAttribute("aria-label", `only ${title}`);
    only.addEventListener("click", () => showOnly((other) => other === kind));
    const label = make("label", "", [box, make("span", "swatch kind-" + about.kinds[kind]), make("span", "title", title),
        make("span", "count", count.toLocaleString("en"))]);
    const item = make("li", "", [label, only]);
    item.dataset.kind = about.kinds[kind];
    return item;
}

function makeMarkItem(mark) {
    const makeStep = (text, label, direction) => {
        const button = make("button", "", text);
        button.type = "button";
        button.setAttribute("aria-label", `${label}: ${mark.title}`);
        button.disabled = mark.list.length === 0;
        button.addEventListener("click", () => goTo(neighbour(mark.list, state.chosen, direction)));
        return button;
    };
    return make("li", "", [make("span", "title", mark.title), make("span", "count", mark.list.length.toLocaleString("en")),
        makeStep("\u2039", "before", -1), makeStep("\u203a", "next", 1)]);
}

function showOutline() {
    countKinds().forEach((count, kind) => {
        if (count > 0)
            element("kinds").append(makeKindItem(kind, count));
    });
    element("marks").append(...MARKS.map(makeMarkItem));
    for (const id of ["problem-before", "problem-after"])
        element(id).disabled = problems.length === 0;
}

function showSummary() {
    document.title = about.file + ": tokens";
    element("file").textContent = about.file;
    const isGood = about.result.startsWith("0,");
    const charsets = [...new Set(tokens.charsets.map((run) => run.name))].slice(0, 3).join(" and ") || "none";
    element("summary").replaceChildren(
        `${about.bytes.toLocaleString("en")} bytes, ${tokens.count.toLocaleString("en")} tokens, charset ${charsets}, `,
        make("span", isGood ? "good" : "bad", `result ${about.result}`));
}

// Colours.

const THEMES = ["system", "light", "dark"];

function changeTheme() {
    const root = document.documentElement;
    const next = THEMES[(THEMES.indexOf(root.dataset.theme ?? "system") + 1) % THEMES.length];
    if (next === "system")
        delete root.dataset.theme;
    else
        root.dataset.theme = next;
    element("theme").textContent = "Colours: " + next;
}

// The pointer.

function tokenUnder(event) {
    const piece = event.target instanceof Element ? event.target.closest("[data-token]") : null;
    return piece ? Number(piece.dataset.token) : -1;
}

function hover(index) {
    if (index === state.hovered)
        return;
    state.hovered = index;
    for (const piece of rowsElement.querySelectorAll(".token"))
        piece.classList.toggle("hovered", Number(piece.dataset.token) === index);
    showPanel();
}

function begin() {
    showSummary();
    showOutline();
    layOut();
    choose(visibleFrom(0, 1));
    showPanel();
    view.addEventListener("scroll", drawSoon, {passive: true});
    view.addEventListener("wheel", turnWheel, {passive: false});
    view.addEventListener("pointerover", (event) => hover(tokenUnder(event)));
    view.addEventListener("pointerleave", () => hover(-1));
    view.addEventListener("click", (event) => choose(tokenUnder(event)));
    document.addEventListener("keydown", pressKey);
    window.addEventListener("resize", resize);
    element("query").addEventListener("input", searchSoon);
    element("query").addEventListener("keydown", pressKeyInQuery);
    element("match-before").addEventListener("click", () => stepMatch(-1));
    element("match-after").addEventListener("click", () => stepMatch(1));
    element("problem-before").addEventListener("click", () => stepProblem(-1));
    element("problem-after").addEventListener("click", () => stepProblem(1));
    element("show-all").addEventListener("click", () => showOnly(() => true));
    element("show-none").addEventListener("click", () => showOnly(() => false));
    element("theme").addEventListener("click", changeTheme);
    view.focus({preventScroll: true});
}

begin();
