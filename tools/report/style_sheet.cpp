#include "tools/report/page_parts.h"

namespace ocpan {

// No ">" selectors and no "<" or "&": the page is well-formed XML too.
std::string_view style_sheet() {
  return R"(
:root { color-scheme: light; --ink: #1d2733; --soft: #5b6775; --rule: #d9dee4; --ground: #f4f6f8;
  --good: #00624a; --good-ground: #e2f3ed; --doubtful: #7a4a00; --doubtful-ground: #fdf0d5;
  --unusable: #a02c00; --unusable-ground: #fde5dc; }
* { box-sizing: border-box; }
html { -webkit-text-size-adjust: 100%; text-size-adjust: 100%; }
body { margin: 0; overflow-wrap: break-word; background: var(--ground); color: var(--ink);
  font: 16px/1.5 system-ui, -apple-system, "Segoe UI", Roboto, "Liberation Sans", Arial, sans-serif; }
header, main, footer { max-width: 1180px; margin: 0 auto; padding: 0 24px; }
header { padding-top: 28px; }
h1 { font-size: 28px; line-height: 1.2; margin: 0 0 4px; overflow-wrap: anywhere; }
h2 { font-size: 21px; margin: 0 0 10px; }
h3 { font-size: 17px; margin: 22px 0 8px; }
p { margin: 0 0 10px; max-width: 78ch; }
.soft, footer { color: var(--soft); }
a { color: #00568a; }
nav { display: flex; flex-wrap: wrap; gap: 4px 18px; margin: 14px 0 18px; font-size: 15px; }
section { background: #fff; border: 1px solid var(--rule); border-radius: 10px;
  padding: 20px 22px; margin: 0 0 18px; }
.banner { border-left: 8px solid; }
.banner.good { border-color: var(--good); } .banner.doubtful { border-color: #d98a00; }
.banner.unusable { border-color: #d55e00; }
.headline { font-size: 20px; font-weight: 600; display: flex; flex-wrap: wrap; gap: 6px 12px;
  align-items: center; margin-bottom: 12px; }
.badge { display: inline-block; border-radius: 999px; padding: 1px 11px 1px 8px; font-size: 14px;
  font-weight: 600; white-space: nowrap; line-height: 1.6; }
.badge.good { color: var(--good); background: var(--good-ground); }
.badge.doubtful { color: var(--doubtful); background: var(--doubtful-ground); }
.badge.unusable { color: var(--unusable); background: var(--unusable-ground); }
.merits { display: grid; grid-template-columns: repeat(auto-fit, minmax(135px, 1fr)); gap: 10px;
  margin: 14px 0 6px; }
.merits div { background: var(--ground); border-radius: 8px; padding: 9px 12px; }
.merits b { display: block; font-size: 21px; line-height: 1.25; font-variant-numeric: tabular-nums; }
.merits span { display: block; font-size: 13px; line-height: 1.35; color: var(--soft); }
ul.findings { list-style: none; margin: 12px 0 4px; padding: 0; }
ul.findings li { display: flex; gap: 10px; align-items: flex-start; padding: 8px 0;
  border-top: 1px solid var(--rule); overflow-wrap: anywhere; }
ul.findings li .badge { flex: none; }
ul.plain { margin: 0 0 10px; padding-left: 20px; }
.camera { border-top: 1px solid var(--rule); margin-top: 18px; padding-top: 2px; }
.camera h3 { display: flex; flex-wrap: wrap; gap: 4px 10px; align-items: center; }
.swatch { width: 13px; height: 13px; border-radius: 3px; display: inline-block; }
.charts { display: grid; grid-template-columns: repeat(auto-fit, minmax(min(100%, 420px), 1fr));
  gap: 18px 22px; margin: 12px 0 6px; }
.charts.small { grid-template-columns: repeat(auto-fit, minmax(min(100%, 300px), 1fr)); }
figure { margin: 0; min-width: 0; break-inside: avoid; display: flex; flex-direction: column; }
.charts svg { margin-top: auto; }
figcaption { font-size: 14px; line-height: 1.4; color: var(--soft); margin: 0 0 6px; }
figcaption b { color: var(--ink); display: block; font-size: 15px; }
svg { display: block; width: 100%; height: auto; }
svg text { font: 12px system-ui, -apple-system, "Segoe UI", Roboto, "Liberation Sans", Arial,
  sans-serif; fill: #3c4855; }
svg .label { font-size: 12.5px; fill: var(--ink); }
svg .mid { text-anchor: middle; } svg .end { text-anchor: end; } svg .key { font-size: 12px; }
svg .name { font-size: 13px; font-weight: 700; text-anchor: middle; paint-order: stroke;
  stroke: #fff; stroke-width: 3px; stroke-linejoin: round; }
svg .ground { fill: #fbfcfd; } svg .grid { stroke: #e3e7ec; stroke-width: 1; }
svg .frame { fill: none; stroke: #8b96a3; stroke-width: 1; }
table { border-collapse: collapse; width: 100%; font-size: 14.5px; margin: 8px 0 6px;
  font-variant-numeric: tabular-nums; }
th { text-align: left; font-weight: 600; color: var(--soft); font-size: 13px; line-height: 1.3;
  vertical-align: bottom; }
th, td { padding: 6px 10px 6px 0; border-bottom: 1px solid var(--rule); }
.file { overflow-wrap: anywhere; }
td { vertical-align: top; }
tbody tr:last-child, tbody tr:last-child td { border-bottom: 0; }
td:first-child { font-weight: 600; }
.pictures { display: grid; grid-template-columns: repeat(auto-fill, minmax(150px, 1fr)); gap: 12px; }
.pictures img { display: block; width: 100%; height: auto; border-radius: 5px; }
.pictures figcaption { font-size: 12.5px; margin: 3px 0 0; overflow-wrap: anywhere; }
.pictures figcaption b { font-size: 12.5px; }
details { margin-top: 10px; } summary { cursor: pointer; font-weight: 600; }
code { font: 12.5px/1.4 ui-monospace, "Liberation Mono", monospace; overflow-wrap: anywhere; }
footer { font-size: 13.5px; padding-bottom: 30px; }
@media (max-width: 640px) {
  header, main, footer { padding-left: 12px; padding-right: 12px; }
  header { padding-top: 18px; } h1 { font-size: 23px; } h2 { font-size: 19px; }
  section { padding: 15px 14px; border-radius: 8px; }
  .merits { grid-template-columns: 1fr 1fr; }
  ul.findings li { flex-direction: column; gap: 4px; }
  .pictures { grid-template-columns: 1fr 1fr; }
  svg text { font-size: 13px; } svg .key { font-size: 12px; } svg .label { font-size: 13.5px; }
  table, tbody, tr, td { display: block; } thead { display: none; }
  tr { border-bottom: 1px solid var(--rule); padding: 7px 0; }
  td { border: 0; padding: 2px 0; display: flex; justify-content: space-between; gap: 14px;
    text-align: right; }
  td::before { content: attr(data-heading); color: var(--soft); font-weight: 400; font-size: 13.5px;
    text-align: left; flex: 0 1 50%; overflow-wrap: normal; }
  td:first-child { font-size: 16px; }
}
@media print {
  @page { margin: 14mm 12mm; }
  body { background: #fff; font-size: 10.5pt; -webkit-print-color-adjust: exact;
    print-color-adjust: exact; }
  header, main, footer { max-width: none; padding: 0; }
  nav { display: none; }
  section { border: 0; border-radius: 0; padding: 0; margin: 0 0 8mm; }
  section.banner { padding-left: 5mm; border-left: 8px solid; }
  .charts { grid-template-columns: 1fr 1fr; gap: 5mm; }
  .charts.small { grid-template-columns: 1fr 1fr 1fr; }
  .pictures { grid-template-columns: repeat(5, 1fr); }
  .merits { grid-template-columns: repeat(3, 1fr); } figcaption { font-size: 9pt; }
  h2, h3 { break-after: avoid; } tr, .merits div, ul.findings li { break-inside: avoid; }
  details::details-content { content-visibility: visible; display: block; }
}
)";
}

}  // namespace ocpan
