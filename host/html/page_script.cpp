#include "host/html/page_script.h"

namespace orvane::host {

const char* const pageScript = R"js(
document.documentElement.className = 'js';
const groups = [...document.querySelectorAll('.lane, .heat tbody')];
for (const group of groups) [...group.children].forEach((item, index) => (item.tabIndex = index ? -1 : 0));
const middle = (item) => item.offsetLeft + item.offsetWidth / 2;
const nearest = (lane, place) =>
  [...lane.children].reduce((a, b) => (Math.abs(middle(b) - place) < Math.abs(middle(a) - place) ? b : a));
document.addEventListener('keydown', (event) => {
  const item = event.target, group = item.parentElement;
  if (!groups.includes(group) || event.altKey || event.ctrlKey || event.metaKey) return;
  const isLane = group.tagName === 'OL';
  const beside = (step) => {
    const other = isLane && groups[groups.indexOf(group) + step];
    return other && other.tagName === 'OL' && other.parentElement === group.parentElement && nearest(other, middle(item));
  };
  const next = item.nextElementSibling, previous = item.previousElementSibling;
  const target = {
    ArrowRight: next, ArrowLeft: previous, Home: group.firstElementChild, End: group.lastElementChild,
    ArrowDown: isLane ? beside(1) : next, ArrowUp: isLane ? beside(-1) : previous,
  }[event.key];
  if (event.key === 'Escape') item.blur();
  if (!target) return;
  event.preventDefault();
  for (const other of target.parentElement.children) other.tabIndex = -1;
  target.tabIndex = 0;
  target.focus();
});
)js";

}  // namespace orvane::host
