#include "host/html/page_style.h"

namespace orvane::host {

const char* const pageStyle = R"css(
:root {
  color-scheme: light dark;
  --page: #ffffff; --raised: #f5f6f8; --ink: #1c2128; --soft: #59636e; --line: #dfe3e8; --edge: #7c8691;
  --plain: #8b95a1; --accent: #2257c4; --tip: #1c2128; --tip-ink: #ffffff; --tip-soft: #c3cad2;
  --hatch: #c2c9d1; --band: #f1f3f5;
  --h0: #f0f2f5; --h1: #d9e5fa; --h2: #b4cdf5; --h3: #8cb1ee; --h4: #5c8ee0; --h5: #3568c4; --h6: #1d4796;
  --h-low: #1c2128; --h-high: #ffffff;
}
@media (prefers-color-scheme: dark) {
  :root {
    --page: #15181c; --raised: #1d2126; --ink: #e8ebee; --soft: #a3adb8; --line: #2f353c; --edge: #7f8a96;
    --plain: #87919c; --accent: #8fb4ff; --tip: #e8ebee; --tip-ink: #15181c; --tip-soft: #414b56;
    --hatch: #444d57; --band: #1f242a;
    --h0: #20252b; --h1: #1c3053; --h2: #21437c; --h3: #2c5caa; --h4: #3d70c4; --h5: #7aa5ea; --h6: #b3cffa;
    --h-low: #ffffff; --h-high: #0d1420;
  }
  .deep { --outline: var(--rim); }
}
@media (prefers-color-scheme: light) { .pale { --outline: var(--rim); } }
* { box-sizing: border-box; }
html { font: 15px/1.5 system-ui, "Segoe UI", Cantarell, "Noto Sans", "DejaVu Sans", sans-serif; }
body {
  max-width: 78rem; margin: 0 auto; padding: 2.5rem clamp(1rem, 4vw, 3rem) 2rem;
  background: var(--page); color: var(--ink); font-variant-numeric: tabular-nums;
}
h1, h2, p, dl, dd, ol { margin: 0; padding: 0; }
h1 { font-size: 2rem; line-height: 1.2; font-weight: 650; letter-spacing: -0.015em; }
h2 { font-size: 1.2rem; line-height: 1.3; font-weight: 600; }
.eyebrow { color: var(--soft); font-size: 0.87rem; margin-bottom: 0.25rem; }
.subtitle { color: var(--soft); margin-top: 0.25rem; }
.facts { display: flex; flex-wrap: wrap; gap: 0.75rem 3rem; margin-top: 1.5rem; }
.facts dt { color: var(--soft); font-size: 0.87rem; }
.facts dd { font-size: 1.2rem; font-weight: 600; overflow-wrap: anywhere; }
section { margin-top: 3rem; }
.quiet, .hint, .none { color: var(--soft); }
.hint, .legend { font-size: 0.87rem; margin-top: 0.75rem; }
.keys { display: none; }
.js .keys { display: block; }
footer { margin-top: 3.5rem; padding-top: 1rem; border-top: 1px solid var(--line); color: var(--soft); font-size: 0.87rem; }
:focus-visible { outline: 2px solid var(--accent); outline-offset: 2px; border-radius: 3px; }

/* Timeline: columns for name, track and time; the background lies behind the tracks of all rows. */
.chart {
  display: grid; grid-template-columns: minmax(6rem, 12rem) minmax(0, 1fr) auto; column-gap: 1rem; row-gap: 0.375rem;
  grid-auto-flow: row dense;
  align-items: center; margin-top: 1rem; position: relative;
}
.back { position: absolute; inset: 1.5rem 0 0; grid-column: 2 / 3; }
.back i, .back b { position: absolute; top: 0; bottom: 0; }
.back i { width: 1px; background: var(--line); }
.back b { background: var(--band); }
.axis { grid-column: 2; position: relative; height: 1.5rem; color: var(--soft); font-size: 0.8rem; }
.axis span { position: absolute; transform: translateX(-50%); }
.name { grid-column: 1; display: flex; align-items: center; gap: 0.5rem; min-width: 0; }
.name bdi { overflow: hidden; text-overflow: ellipsis; white-space: nowrap; }
.time { grid-column: 3; text-align: right; }
.swatch {
  flex: none; display: inline-block; width: 0.75rem; height: 0.75rem; border-radius: 3px; background: var(--c);
  box-shadow: inset 0 0 0 1px var(--outline, transparent); forced-color-adjust: none;
}
.lane, .presence { grid-column: 2; position: relative; height: 1.5rem; list-style: none; border-radius: 4px; }
.lane > li {
  position: absolute; top: 0; bottom: 0; min-width: 3px; border-radius: 2px; background: var(--c);
  box-shadow: inset 0 0 0 1px var(--outline, transparent); forced-color-adjust: none;
}
.lane > li:hover, .lane > li:focus-visible { z-index: 3; outline: 2px solid var(--accent); outline-offset: 1px; }
.idle > li { background: repeating-linear-gradient(135deg, var(--hatch) 0 2px, transparent 2px 6px); box-shadow: inset 0 0 0 1px var(--edge); }
.presence span {
  position: absolute; top: 0; bottom: 0; padding: 0 0.5rem; border: 1px solid var(--edge); border-width: 0 2px;
  font-size: 0.87rem; line-height: 1.5rem; white-space: nowrap;
  background: linear-gradient(var(--edge), var(--edge)) 0 100% / 100% 1px no-repeat;
}
.presence .open { border-right-style: dotted; }
.tip {
  position: absolute; width: 1px; height: 1px; overflow: hidden; clip-path: inset(50%); white-space: nowrap;
}
li:hover > .tip, li:focus-visible > .tip {
  top: calc(100% + 6px); left: 0; width: max-content; max-width: min(26rem, 60vw); height: auto; overflow: visible;
  clip-path: none; white-space: normal; padding: 0.5rem 0.75rem; border-radius: 6px; background: var(--tip);
  color: var(--tip-ink); font-size: 0.87rem; line-height: 1.4; pointer-events: none;
  display: grid; grid-template-columns: 1fr auto; gap: 0.125rem 1rem;
}
li.late > .tip { left: auto; right: 0; }
.tip strong { grid-column: 1; font-weight: 600; overflow-wrap: anywhere; }
.tip em { font-style: normal; color: var(--tip-soft); text-align: right; }
.tip > span { grid-column: 1 / -1; color: var(--tip-soft); }

/* Tables */
.scroll { overflow-x: auto; padding: 0 4px; margin: 0 -4px; }
table { border-collapse: collapse; width: 100%; }
caption { text-align: left; color: var(--soft); font-size: 0.87rem; padding-bottom: 0.75rem; }
th, td { padding: 0.375rem 0.75rem; text-align: left; font-weight: 400; vertical-align: top; }
th:first-child, td:first-child { padding-left: 0; }
th:last-child, td:last-child { padding-right: 0; }
thead th { color: var(--soft); font-size: 0.87rem; }
.num { text-align: right; white-space: nowrap; }
.list td, .totals tbody td, .totals tbody th { border-top: 1px solid var(--line); }
.list { font-size: 0.93rem; }
.list td { overflow-wrap: anywhere; }
.list td:not(:nth-last-child(2)) { white-space: nowrap; }
.totals { margin-top: 0.25rem; }
.totals tbody th { width: 32%; position: relative; padding-left: 1.375rem; overflow-wrap: break-word; }
.totals th .swatch { position: absolute; left: 0; top: 0.75rem; }
.group th, .group .num, tfoot th, tfoot .num { font-weight: 600; }
.totals .member th { padding-left: 2.75rem; }
.totals .member .swatch { left: 1.375rem; }
.totals .member th, .totals .member td { border-top-color: transparent; }
.totals tfoot th, .totals tfoot td { border-top: 2px solid var(--line); }
.bar { width: 42%; min-width: 6rem; }
.bar i {
  display: block; height: 0.75rem; margin-top: 0.375rem; min-width: 2px; border-radius: 2px; background: var(--c);
  box-shadow: inset 0 0 0 1px var(--outline, transparent); forced-color-adjust: none;
}
.member .bar i { height: 0.5rem; margin-top: 0.5rem; }
details { margin-top: 1rem; }
summary { cursor: pointer; padding: 0.25rem 0; width: fit-content; }
details > table, details > .scroll { margin: 0.5rem 0 1.5rem; }
.windows details { margin: 0; border-top: 1px solid var(--line); }
.windows details:last-child { border-bottom: 1px solid var(--line); }
.windows summary { width: auto; padding: 0.375rem 0; }
.windows summary .swatch { margin: 0 0.375rem 0 0.25rem; }
.windows summary data { float: right; }
.windows details > table { margin: 0.75rem 0 1.5rem; padding-left: 1.5rem; border-collapse: separate; border-spacing: 0; }
.windows h2 { margin-bottom: 0.75rem; }

/* Heat map */
.heat { table-layout: fixed; min-width: 56rem; margin-top: 0.25rem; border-collapse: separate; border-spacing: 2px; margin-inline: -2px; }
.heat tr:focus-visible { outline-offset: 0; }
.heat th, .heat td { padding: 0; height: 1.6rem; vertical-align: middle; }
.heat thead th { text-align: center; font-size: 0.8rem; }
.heat thead th:first-child { width: 11.5rem; text-align: left; }
.heat .num { width: 6rem; text-align: right; }
.heat th[scope=row] { white-space: nowrap; }
.heat .weekend th { color: var(--soft); }
.heat .monday:not(:first-child) > * { border-top: 6px solid transparent; background-clip: padding-box; height: calc(1.6rem + 6px); }
.heat tbody .monday:not(:first-child) > td:not(.num) { border-radius: 3px / 9px 9px 3px 3px; }
.heat caption, .heat th:first-child { padding-left: 2px; }
.heat tr > :last-child { padding-right: 2px; }
.heat tbody td:not(.num) { background-color: var(--b, var(--h0)); border-radius: 3px; text-align: center; font-size: 0.75rem; forced-color-adjust: none; }
.heat tbody td data { opacity: 0; }
.heat tbody .num data, .heat tr:hover data, .heat tr:focus-visible data { opacity: 1; }
.heat tbody td:not(.num) { color: var(--h-low); }
.h1 { --b: var(--h1); }
.h2 { --b: var(--h2); }
.h3 { --b: var(--h3); }
.h4 { --b: var(--h4); }
.h5 { --b: var(--h5); }
.h6 { --b: var(--h6); }
.heat tbody td:is(.h5, .h6) { color: var(--h-high); }
.legend { display: flex; align-items: center; gap: 2px; color: var(--soft); }
.legend i { width: 1.25rem; height: 0.75rem; border-radius: 2px; background: var(--b, var(--h0)); forced-color-adjust: none; }
.legend i:first-of-type { margin-left: 0.5rem; }
.legend i:last-of-type { margin-right: 0.5rem; }

@media (max-width: 44rem) {
  html { font-size: 14px; }
  h1 { font-size: 1.6rem; }
  .chart { grid-template-columns: minmax(0, 1fr) auto; row-gap: 0.125rem; }
  .back, .axis, .lane, .presence { grid-column: 1 / -1; }
  .name, .time { margin-top: 0.5rem; z-index: 1; background: var(--page); }
  .time { grid-column: 2; }
  .name:empty, .time:empty { display: none; }
  th, td { padding: 0.375rem 0.5rem; }
  .totals tbody th { width: auto; }
  .bar { width: 20%; min-width: 3rem; }
}
@media print { body { max-width: none; padding: 0; } .hint { display: none; } }
)css";

}  // namespace orvane::host
