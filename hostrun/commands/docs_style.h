// hostrun/commands/docs_style.h - the look of the reference page and its search box.
#pragma once

namespace hostrun {

inline constexpr const char* kDocsStyle = R"css(
:root {
  --paper: #fbfbfc; --panel: #ffffff; --edge: #d9dce3; --ink: #1d2027; --soft: #565d6b; --link: #1f55b5;
  --code: #f0f2f6; --note: #fff6df; --note-edge: #d9a520; --check: #c9cdd6;
}
@media (prefers-color-scheme: dark) {
  :root {
    --paper: #16181d; --panel: #1d2027; --edge: #363b47; --ink: #e8eaef; --soft: #a5adbb; --link: #8db7ff;
    --code: #262a33; --note: #332b17; --note-edge: #c79a2d; --check: #4a505e;
  }
}
* { box-sizing: border-box; }
html { scroll-padding-top: 9rem; }
body {
  margin: 0; background: var(--paper); color: var(--ink); font: 16px/1.55 system-ui, "DejaVu Sans", sans-serif;
  display: grid; grid-template: auto 1fr / 18rem minmax(0, 1fr);
}
header {
  grid-column: 1 / -1; position: sticky; top: 0; z-index: 1; background: var(--panel);
  border-bottom: 1px solid var(--edge); padding: 0.8rem 1.5rem;
}
header h1 { font-size: 1.25rem; margin: 0; }
header p { margin: 0 0 0.5rem; color: var(--soft); font-size: 0.85rem; }
label { position: absolute; width: 1px; height: 1px; overflow: hidden; clip-path: inset(50%); }
input {
  width: min(32rem, 100%); font: inherit; padding: 0.35rem 0.7rem; border: 1px solid var(--edge); border-radius: 6px;
  background: var(--paper); color: var(--ink);
}
input:focus-visible, a:focus-visible, summary:focus-visible { outline: 2px solid var(--link); outline-offset: 2px; }
input::placeholder { color: var(--soft); opacity: 1; }
output { margin-left: 0.8rem; color: var(--soft); font-size: 0.85rem; }
nav {
  position: sticky; top: 7.2rem; align-self: start; max-height: calc(100vh - 7.2rem); overflow: auto;
  padding: 1rem 1rem 2rem 1.5rem; font-size: 0.85rem;
}
nav h2 { font-size: 1rem; margin: 1rem 0 0.3rem; }
nav h3 { font-size: 0.8rem; margin: 0.7rem 0 0.1rem; color: var(--soft); font-weight: 600; }
nav ul { list-style: none; margin: 0; padding: 0; }
nav li a { display: block; overflow-wrap: anywhere; padding: 0.08rem 0; }
a { color: var(--link); text-decoration: none; }
a:hover { text-decoration: underline; }
main { padding: 0 2rem 4rem; max-width: 60rem; border-left: 1px solid var(--edge); }
main h2 { font-size: 1.6rem; margin: 2rem 0 0.3rem; }
main h3 { font-size: 1.15rem; margin: 2.2rem 0 0.3rem; border-bottom: 1px solid var(--edge); }
p { margin: 0.45rem 0; }
article { background: var(--panel); border: 1px solid var(--edge); border-radius: 8px; padding: 0.7rem 1rem; margin: 0.8rem 0; }
article:target { border-color: var(--link); }
h4 { margin: 0; font-size: 1rem; display: flex; flex-wrap: wrap; gap: 0.2rem 0.7rem; align-items: baseline; overflow-wrap: anywhere; }
.kind { font-size: 0.75rem; font-weight: 400; color: var(--soft); }
code { font: 0.9em/1.5 ui-monospace, "DejaVu Sans Mono", monospace; }
p code, dd code { background: var(--code); border-radius: 4px; padding: 0.05em 0.3em; }
pre { background: var(--code); border-radius: 6px; padding: 0.45rem 0.7rem; margin: 0.5rem 0; white-space: pre-wrap; overflow-wrap: anywhere; }
pre i { font-style: normal; color: var(--soft); }
dl { margin: 0.4rem 0 0; font-size: 0.92rem; }
dl div { display: grid; grid-template-columns: 6rem 1fr; }
dt { color: var(--soft); }
dd { margin: 0; }
.note { background: var(--note); border-left: 4px solid var(--note-edge); border-radius: 4px; padding: 0.4rem 0.7rem; }
.swatch { display: flex; flex-wrap: wrap; gap: 0.3rem 0.8rem; align-items: center; margin: 0.5rem 0; }
.swatch span {
  width: 7rem; height: 2.2rem; border-radius: 6px; border: 1px solid var(--edge);
  background: linear-gradient(var(--c), var(--c)), repeating-conic-gradient(var(--check) 0 25%, #fff 0 50%) 0 0 / 14px 14px;
}
.swatch b { font: 600 0.9rem ui-monospace, "DejaVu Sans Mono", monospace; }
.swatch small { color: var(--soft); }
figure { margin: 0.8rem 0; border-left: 4px solid var(--link); padding: 0.1rem 0 0.1rem 0.8rem; }
figcaption { color: var(--soft); font-size: 0.85rem; }
h4 small, nav small { font-size: 0.85em; font-weight: 400; color: var(--soft); }
pre a { text-decoration: underline; text-underline-offset: 2px; }
main:focus { outline: none; }
summary { cursor: pointer; font-size: 1rem; padding: 0.4rem 0; }
.skip {
  position: absolute; left: 0.5rem; top: -10rem; z-index: 2; padding: 0.4rem 0.8rem; border-radius: 6px;
  background: var(--panel); border: 1px solid var(--link);
}
.skip:focus { top: 0.5rem; }
[hidden] { display: none !important; }
@media (min-width: 52.01rem) { summary { display: none; } }
@media (max-width: 52rem) {
  html { scroll-padding-top: 9rem; }
  header { display: flex; flex-wrap: wrap; align-items: center; gap: 0.4rem 0.8rem; padding: 0.6rem 1rem; }
  header h1 { width: 100%; }
  header p { display: none; }
  input { flex: 1 1 20rem; max-width: 32rem; }
  body { grid-template-columns: minmax(0, 1fr); grid-template-rows: auto auto 1fr; }
  nav { position: static; max-height: none; padding: 0.5rem 1rem; border-bottom: 1px solid var(--edge); }
  nav li a { padding: 0.3rem 0; }
  main { padding: 0 1rem 3rem; border-left: 0; }
  output { margin: 0; }
}
@media (max-height: 36rem) {
  html { scroll-padding-top: 1rem; }
  header { position: static; }
}
@media print {
  :root {
    --paper: #ffffff; --panel: #ffffff; --edge: #bbbbbb; --ink: #000000; --soft: #444444; --link: #000000;
    --code: #f2f2f2; --note: #ffffff; --note-edge: #888888;
  }
  html, body { font-size: 10pt; }
  body { display: block; }
  header { position: static; padding: 0 0 0.5rem; }
  nav, input, output, .skip { display: none; }
  main { max-width: none; padding: 0; border: 0; }
  article, figure, .note, .swatch { break-inside: avoid; }
  h2, h3, h4 { break-after: avoid; }
  .swatch span { print-color-adjust: exact; -webkit-print-color-adjust: exact; }
}
)css";

// Shows the members that have every word of the search box, in their name, their text, or their class's name.
inline constexpr const char* kDocsScript = R"js(
'use strict';
const box = document.getElementById('search');
const count = document.getElementById('count');
const articles = [...document.querySelectorAll('article')];
const texts = articles.map(a => (a.dataset.in + ' ' + a.parentElement.querySelector('h3').textContent + ' ' +
  a.textContent).toLowerCase());
const links = new Map([...document.querySelectorAll('nav li a')].map(a => [a.hash.slice(1), a.parentElement]));

function search() {
  const words = box.value.toLowerCase().split(/\s+/).filter(Boolean);
  let shown = 0;
  articles.forEach((article, i) => {
    const fits = words.every(word => texts[i].includes(word));
    article.hidden = !fits;
    links.get(article.id).hidden = !fits;
    if (fits) ++shown;
  });
  const empty = s => !s.querySelector('article:not([hidden])');
  document.querySelectorAll('main section').forEach(s => { s.hidden = empty(s); });
  document.querySelectorAll('nav ul').forEach(list => {
    const none = !list.querySelector('li:not([hidden])');
    list.hidden = none;
    list.previousElementSibling.hidden = none;
  });
  document.querySelectorAll('nav section').forEach(s => { s.hidden = !s.querySelector('ul:not([hidden])'); });
  document.getElementById('none').hidden = shown > 0;
  count.value = words.length ? shown + ' of ' + articles.length + ' members' : articles.length + ' members';
}

// Beside the members the contents are always open; above them they open on demand.
const contents = document.getElementById('contents');
const beside = matchMedia('(min-width: 52.01rem)');
const fold = () => { contents.open = beside.matches; };
beside.addEventListener('change', fold);
fold();
contents.addEventListener('click', event => {
  if (event.target.closest('a') && !beside.matches) contents.open = false;
});

box.addEventListener('input', search);
document.addEventListener('keydown', event => {
  if (event.key === '/' && document.activeElement !== box) {
    event.preventDefault();
    box.focus();
  } else if (event.key === 'Escape' && document.activeElement === box) {
    box.value = '';
    search();
  }
});
// reference.html#q=WORDS opens with a search.
function searchFromAddress() {
  if (!location.hash.startsWith('#q=')) return;
  box.value = decodeURIComponent(location.hash.slice(3));
  search();
}
window.addEventListener('hashchange', searchFromAddress);
search();
searchFromAddress();
)js";

}  // namespace hostrun
