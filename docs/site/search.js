// Search in the sections of all pages, without a server: search-index.js has [address, title, page, text] of each.
const field = document.getElementById("search");
const page = document.getElementById("page");
const results = document.getElementById("results");

// "wkHanning" is found as hanning, "zero-phase" and "ZeroPhase" as zero phase.
function normal(text) {
    return text.replace(/([a-z])([A-Z])/g, "$1 $2").replace(/([A-Z]+)([A-Z][a-z])/g, "$1 $2")
        .toLowerCase().replace(/[-_/]+/g, " ");
}

function loaded() {
    return new Promise((ready) => {
        if (typeof mensuraIndex !== "undefined") return ready();
        const script = document.createElement("script");
        script.src = "search-index.js";
        script.onload = ready;
        document.head.append(script);
    });
}

// 0 when a word of the query is missing; a title counts more than the text, the whole query more than its words.
function score(entry, query, words) {
    const raw = entry[1].toLowerCase(), title = " " + raw + " " + normal(entry[1]) + " ";
    const text = " " + normal(entry[3]) + " " + entry[3].toLowerCase();
    if (!words.every((word) => title.includes(word) || text.includes(word))) return 0;
    let points = 1;
    if (raw === query || normal(entry[1]).trim() === query) points += 100;
    if (title.includes(" " + query)) points += 40;
    else if (title.includes(query)) points += 20;
    if (text.includes(" " + query)) points += 10;
    points += 5 * words.filter((word) => title.includes(word)).length;
    return points + Math.min(5, text.split(query).length - 1);
}

function found(text) {
    const query = text.trim().toLowerCase().replace(/[-_]+/g, " ");
    const words = query.split(/\s+/);
    return mensuraIndex.map((entry) => [score(entry, query, words), entry]).filter(([points]) => points > 0)
        .sort((a, b) => b[0] - a[0]).slice(0, 40).map(([, entry]) => [entry, words]);
}

function snippet(text, words) {
    const at = Math.max(0, ...words.map((word) => text.toLowerCase().indexOf(word)));
    const from = Math.max(0, text.lastIndexOf(" ", at - 60));
    return (from > 0 ? "… " : "") + text.slice(from, from + 200).trim() + (from + 200 < text.length ? " …" : "");
}

function element(tag, text, children = []) {
    const made = document.createElement(tag);
    made.textContent = text;
    made.append(...children);
    return made;
}

async function search() {
    const text = field.value;
    const searching = text.trim().length > 1;
    page.hidden = searching;
    results.hidden = !searching;
    if (!searching) return;
    await loaded();
    const hits = found(text);
    const list = hits.map(([[address, title, where, body], words]) => {
        const link = element("a", title);
        link.href = address;
        link.addEventListener("click", clear);
        return element("li", "", [link, element("span", where), element("p", snippet(body, words))]);
    });
    results.replaceChildren(element("h1", hits.length ? `Found: ${text}` : `Nothing found for ${text}`),
                            element("ol", "", list));
}

function clear() {
    field.value = "";
    search();
}

field.addEventListener("input", search);
document.querySelector("nav").addEventListener("click", (event) => {
    if (!event.target.closest("a")) return;
    document.getElementById("menu").checked = false;  // on narrow screens the navigation covers the page
    clear();
});
document.addEventListener("keydown", (event) => {
    if (event.key === "/" && document.activeElement !== field) {
        event.preventDefault();
        field.focus();
    } else if (event.key === "Escape") {
        clear();
    }
});
if (field.value) search();
document.querySelector("nav .here")?.scrollIntoView({ block: "nearest" });
