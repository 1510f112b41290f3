#include "Staylit/History/PageParts.h"

namespace staylit {

const char* const PageParts::kStyleHash = "j7ijMSoOprRxUasp/7yFK03LzQrcoau3gmKSAgwmSQ8=";
const char* const PageParts::kStyle = R"css(
:root{color-scheme:light dark;
--paper:#fbfaf8;--card:#fff;--ink:#1e1b2e;--soft:#5c5870;--line:#dcd8e4;--grid:#dfdbe7;--track:#f4f2f7;--gap:#8b8699;
--held:#b4690e;--grace:#b4690e;--work:#4b3f8f;--stop:#b3261e;--sleep:#46708f;--lid:#6b5b53;--battery:#7a6200;--charge:#3b7a4b;--ask:#8a3a78;
--link:#4b3f8f;--focus:#0b57d0;--now:#b3261e}
@media screen and (prefers-color-scheme:dark){:root{
--paper:#15131f;--card:#1d1a2a;--ink:#f0edf6;--soft:#aca6bf;--line:#39344c;--grid:#38334b;--track:#232033;--gap:#827c98;
--held:#ffb443;--grace:#ffb443;--work:#a99bf0;--stop:#ff8a80;--sleep:#7fb2d6;--lid:#c4aea3;--battery:#dcc14b;--charge:#7cc98e;--ask:#e59ad0;
--link:#c0b5f7;--focus:#8ab4f8;--now:#ff8a80}}
@media (forced-colors:active){:root{--held:CanvasText;--grace:CanvasText;--work:CanvasText;--stop:CanvasText;--sleep:CanvasText;
--lid:CanvasText;--battery:CanvasText;--charge:CanvasText;--ask:CanvasText;--track:Canvas;--grid:GrayText;--gap:GrayText;--focus:Highlight;--now:CanvasText}}
*{box-sizing:border-box}
html{scroll-padding-top:1rem}
body{margin:0 auto;padding:1.5rem clamp(.9rem,3vw,2.5rem) 3rem;max-width:74rem;background:var(--paper);color:var(--ink);
font:1rem/1.5 system-ui,"Segoe UI",Roboto,"Noto Sans","DejaVu Sans",sans-serif;font-variant-numeric:tabular-nums;overflow-wrap:anywhere}
h1,h2,h3,p{margin:0}
h1{display:flex;align-items:center;gap:.7rem;font-size:1.05rem;font-weight:600;color:var(--soft);text-wrap:balance}
h1 svg{flex:none;width:1.9rem;height:1.9rem;fill:var(--held)}
h2,.day h3{font-size:1.3rem;font-weight:700;line-height:1.3;margin:0}
h3{font-size:1.05rem;margin:1.6rem 0 .4rem}
a{color:var(--link)}
.skip{position:absolute;left:-99rem}
.skip:focus{left:1rem;top:.5rem;padding:.4rem .8rem;background:var(--card);z-index:2}
:focus-visible{outline:3px solid var(--focus);outline-offset:2px;border-radius:3px}
.answer{margin:.9rem 0 .3rem;font-size:clamp(1.35rem,1rem + 1.7vw,2rem);line-height:1.25;font-weight:600;letter-spacing:-.01em;text-wrap:balance;max-width:60rem}
.more,section p{text-wrap:pretty}
.more{color:var(--soft);max-width:50rem}
section{margin-top:2rem;padding:1.1rem clamp(.8rem,2vw,1.5rem) 1.3rem;background:var(--card);border:1px solid var(--line);border-radius:14px}
section p{margin-top:.15rem;color:var(--soft);max-width:52rem}
table{border-collapse:collapse;width:100%;margin-top:.7rem}
th,td{padding:.28rem .5rem;text-align:left;vertical-align:top;font-weight:400}
th:first-child,td:first-child{padding-left:0}
th:last-child,td:last-child{padding-right:0}
thead th{color:var(--soft);font-size:.82rem}
tbody tr+tr{border-top:1px solid var(--grid)}
.n{text-align:right;white-space:nowrap}
svg{display:block;width:100%;overflow:visible}
.lanes{table-layout:fixed}
.lanes th,.lanes td{padding-top:.2rem;padding-bottom:.2rem;vertical-align:middle;border:0}
.lanes tr+tr{border:0}
.lanes .what{width:10.5rem}
.lanes .sum{width:10.5rem}
.lanes td.sum{font-size:.86rem;line-height:1.2;padding-left:.9rem}
.lanes tbody th{line-height:1.2}
th bdi{display:-webkit-box;-webkit-line-clamp:2;-webkit-box-orient:vertical;overflow:hidden}
.lanes small{display:block}
.lanes small,.s{color:var(--soft);font-size:.86rem}
.lanes .rule th,.lanes .rule td{padding-top:.75rem}
.lanes .when{padding-left:.3rem;padding-right:.3rem}
.hours text{fill:var(--soft);font-size:.75rem}
.bg{fill:var(--track)}.g{stroke:var(--grid)}.gap{fill:url(#p-gap)}
.now{stroke:var(--now);stroke-width:1.5}
.held{fill:var(--held)}.want{fill:none;stroke:var(--held);stroke-width:1.5;stroke-dasharray:3 2}.ask{fill:var(--ask)}.grace{fill:url(#p-grace);stroke:var(--grace);stroke-width:1}
.work{fill:var(--work)}.other{fill:url(#p-other);stroke:var(--work);stroke-width:1}
.block{fill:var(--stop)}.pause{fill:url(#p-pause);stroke:var(--stop);stroke-width:1}
.sleep{fill:var(--sleep)}.lid{fill:var(--lid)}.batt{fill:url(#p-batt);stroke:var(--battery);stroke-width:1}
.area{fill:var(--charge);opacity:.22}.curve{fill:none;stroke:var(--charge);stroke-width:2;vector-effect:non-scaling-stroke;stroke-linejoin:round}
.s1{stroke:var(--held)}.s2{stroke:var(--work)}.s3{stroke:var(--stop)}.s4{stroke:var(--battery)}.s5{stroke:var(--gap)}
pattern path{stroke-width:2;fill:none}pattern .s5{stroke-width:1}
svg a:hover rect,svg a:focus-visible rect{stroke:var(--focus);stroke-width:3}
svg a:focus-visible{outline:none}
details{margin-top:.8rem}
summary{cursor:pointer;color:var(--link);width:fit-content}
.log{table-layout:auto;font-size:.92rem}
.log td:first-child{white-space:nowrap}
.log .n{padding-left:1rem}
tr:target{background:color-mix(in srgb,var(--held) 22%,transparent)}
.week td a,.week th a{color:inherit;text-decoration-color:var(--line);text-underline-offset:.2em}
.week,.sums{table-layout:fixed}
.week td{vertical-align:middle}
.week .day,.sums .name{width:10.5rem}.week .n{width:7rem}.sums .n{width:9rem}
.sums td.bar{vertical-align:middle}
.key{display:flex;flex-wrap:wrap;gap:.3rem 1.2rem;margin:.9rem 0 0;padding:0;list-style:none;color:var(--soft);font-size:.86rem}
.key li{display:flex;align-items:center;gap:.45rem}
.key svg{width:1.5rem;height:.8rem;flex:none}
.hide{position:absolute;width:1px;height:1px;overflow:hidden;clip-path:inset(50%);white-space:nowrap}
#tip[hidden]{display:none}
#tip{position:absolute;z-index:3;max-width:min(22rem,calc(100vw - 2rem));padding:.45rem .7rem;border-radius:8px;background:var(--ink);color:var(--paper);
font-size:.88rem;line-height:1.35;pointer-events:none;box-shadow:0 4px 14px #0005;white-space:pre-line}
footer{margin-top:2rem;color:var(--soft);font-size:.86rem}
footer p{max-width:52rem}
@media screen and (max-width:44rem){
.lanes,.lanes thead,.lanes tbody,.lanes thead tr,.lanes .when,.week,.week thead,.week tbody,.week .when{display:block}
.lanes thead .what,.lanes thead .sum{display:none}
.lanes tbody tr,.week tr{display:grid;grid-template-columns:1fr auto;column-gap:.9rem;padding:.22rem 0}
.week tr{grid-template-columns:1fr auto 5.7rem;column-gap:.6rem}
.lanes td.when,.week .when{grid-column:1/-1;grid-row:2;padding:.1rem 0;width:auto}
.lanes tbody th,.lanes td.sum,.lanes .rule th,.lanes .rule td,.week th,.week td,.week .day,.week .n{width:auto;padding:0;font-size:.88rem}
.lanes td.sum{text-align:right}
.lanes tr.rule{padding-top:.7rem}
.hours .odd{display:none}
.sums .bar{display:none}.sums .name{width:auto}.sums .n{width:6.3rem}.sums tbody .n{font-size:.88rem}.sums thead .n{white-space:normal}
.log,.log tbody{display:block}
.log tr{display:grid;grid-template-columns:1fr auto;padding:.35rem 0}
.log thead{display:none}
.log td{padding:0}
.log td:nth-child(2){grid-column:1/-1;grid-row:2}}
@media print{
@page{margin:14mm}
body{font-size:9.5pt;padding:0;max-width:none;background:#fff}
*{print-color-adjust:exact;-webkit-print-color-adjust:exact}
section{border:0;padding:0;margin-top:9mm;border-radius:0}
.day{break-inside:auto}
.top,.week,.sums tr,.log tr,.answer{break-inside:avoid}
h2,h3,section p{break-after:avoid}
thead{display:table-header-group}
.skip,summary,#tip[hidden]{display:none}
#tip{display:none}
details::details-content{content-visibility:visible;display:block;height:auto}
a{color:inherit;text-decoration:none}}
)css";

const char* const PageParts::kScriptHash = "7Lxpm7xyRFEp9HvcUV5pgeY6uPJ9OJlNs+1TUvtmpuE=";
const char* const PageParts::kScript = R"js(
//<![CDATA[
(function () {
  'use strict';
  var tip = document.createElement('div');
  tip.id = 'tip';
  tip.hidden = true;
  tip.setAttribute('aria-hidden', 'true');
  document.body.append(tip);
  function textOf(mark) {
    var title = mark.querySelector('title');
    if (title) {
      mark.setAttribute('aria-label', title.textContent);
      title.remove();
    }
    return mark.getAttribute('aria-label');
  }
  function show(mark) {
    tip.textContent = textOf(mark);
    tip.hidden = false;
    var box = mark.getBoundingClientRect();
    var room = document.documentElement.clientWidth - tip.offsetWidth - 8;
    var left = Math.max(8, Math.min(box.left, room));
    tip.style.left = left + window.scrollX + 'px';
    tip.style.top = box.bottom + window.scrollY + 8 + 'px';
  }
  function hide() {
    tip.hidden = true;
  }
  function marksIn(place) {
    return Array.from(place.querySelectorAll('svg.lane a'));
  }
  function move(from, to) {
    from.tabIndex = -1;
    to.tabIndex = 0;
    to.focus();
  }
  function nearest(mark, step) {
    var rows = Array.from(mark.closest('table').rows);
    var at = mark.getBoundingClientRect().left;
    var distance = function (other) {
      return Math.abs(other.getBoundingClientRect().left - at);
    };
    var index = rows.indexOf(mark.closest('tr')) + step;
    for (; rows[index]; index += step) {
      var marks = marksIn(rows[index]);
      marks.sort(function (one, other) { return distance(one) - distance(other); });
      if (marks.length) return marks[0];
    }
    return null;
  }
  function target(mark, key) {
    var marks = marksIn(mark.closest('svg'));
    var index = marks.indexOf(mark);
    if (key === 'ArrowRight') return marks[index + 1];
    if (key === 'ArrowLeft') return marks[index - 1];
    if (key === 'Home') return marks[0];
    if (key === 'End') return marks[marks.length - 1];
    if (key === 'ArrowDown') return nearest(mark, 1);
    if (key === 'ArrowUp') return nearest(mark, -1);
    return undefined;
  }
  document.querySelectorAll('table.lanes').forEach(function (table) {
    marksIn(table).forEach(function (mark, index) {
      mark.tabIndex = index ? -1 : 0;
    });
    function markOf(event) {
      return event.target.closest('svg.lane a');
    }
    ['focusin', 'pointerover'].forEach(function (kind) {
      table.addEventListener(kind, function (event) {
        var mark = markOf(event);
        if (mark) show(mark);
      });
    });
    ['focusout', 'pointerout'].forEach(function (kind) {
      table.addEventListener(kind, hide);
    });
    table.addEventListener('keydown', function (event) {
      var mark = markOf(event);
      if (!mark || event.altKey || event.ctrlKey || event.metaKey) return;
      if (event.key === 'Escape') hide();
      var other = target(mark, event.key);
      if (other === undefined) return;
      event.preventDefault();
      if (other) {
        table.querySelectorAll('svg.lane a[tabindex="0"]').forEach(function (each) {
          each.tabIndex = -1;
        });
        move(mark, other);
      }
    });
  });
  var opened = [];
  window.addEventListener('beforeprint', function () {
    opened = Array.from(document.querySelectorAll('details:not([open])'));
    opened.forEach(function (details) { details.open = true; });
  });
  window.addEventListener('afterprint', function () {
    opened.forEach(function (details) { details.open = false; });
  });
})();
//]]>
)js";

const char* const PageParts::kPatterns = R"svg(<svg class="hide" aria-hidden="true"><defs>
<pattern id="p-gap" width="6" height="6" patternUnits="userSpaceOnUse"><path class="s5" d="M0 6L6 0"/></pattern>
<pattern id="p-grace" width="5" height="5" patternUnits="userSpaceOnUse"><path class="s1" d="M-1 1L1 -1M0 5L5 0M4 6L6 4"/></pattern>
<pattern id="p-other" width="5" height="5" patternUnits="userSpaceOnUse"><path class="s2" d="M-1 1L1 -1M0 5L5 0M4 6L6 4"/></pattern>
<pattern id="p-pause" width="5" height="5" patternUnits="userSpaceOnUse"><path class="s3" d="M2.5 0V5"/></pattern>
<pattern id="p-batt" width="5" height="5" patternUnits="userSpaceOnUse"><path class="s4" d="M0 2.5H5"/></pattern>
</defs></svg>
)svg";

const char* const PageParts::kCup =
    R"svg(<svg viewBox="0 0 16 16" aria-hidden="true"><path d="M3 3H12V7A4 4 0 0 1 8 11H7A4 4 0 0 1 3 7Z"/><path d="M12 4H12.5A2.5 2.5 0 0 1 12.5 9H12V8H12.5A1.5 1.5 0 0 0 12.5 5H12Z"/><path d="M1 12H14A3 2 0 0 1 11 14H4A3 2 0 0 1 1 12Z"/></svg>)svg";

}  // namespace staylit
