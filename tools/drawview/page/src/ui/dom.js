// Elements by name. Texts are always texts: nothing from outside is read as HTML.

/** The element with an id. */
export const byId = (id) => document.getElementById(id);

/**
 * Makes an element. `properties` become properties of the element, those with a hyphen or called
 * `role` attributes; functions called on... become listeners. Strings become text.
 */
export function make(tag, properties = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(properties)) {
    if (typeof value === 'function') element.addEventListener(name.slice(2), value);
    else if (name.includes('-') || name === 'role') element.setAttribute(name, value);
    else element[name] = value;
  }
  element.append(...children.filter((child) => child !== null && child !== undefined));
  return element;
}

/** A copy of an icon of the page. */
export function icon(name) {
  return byId('icons').content.querySelector(`[data-icon="${name}"]`).cloneNode(true);
}

/** A button with an icon; `label` is its tooltip and what screen readers say. */
export function tool(name, label, onclick, properties = {}) {
  const { className = '', ...others } = properties;
  return make(
    'button',
    { type: 'button', className: `tool ${className}`, title: label, 'aria-label': label, onclick, ...others },
    icon(name),
  );
}

export function press(button, on) {
  button.setAttribute('aria-pressed', String(Boolean(on)));
}

/** Shows how far a slider stands. */
export function fillSlider(slider) {
  const { min, max, value } = slider;
  const share = max > min ? (value - min) / (max - min) : 1;
  slider.style.setProperty('--fill', `${100 * share}%`);
}

/** A coordinate for reading: ten digits at most, without needless zeros. */
export function figure(value, digits = 10) {
  if (value === 0) return '0';
  const size = Math.abs(value);
  const text = value.toPrecision(digits);
  if (size >= 1e10 || size < 1e-5) return value.toExponential(Math.min(digits, 7)).replace(/\.?0+e/, 'e');
  return text.includes('.') ? text.replace(/\.?0+$/, '') : text;
}

/** A count for reading: 1 204, 38.2 k, 1.04 M. */
export function countText(value) {
  if (value < 10_000) return value.toLocaleString('en').replace(/,/g, '\u202f');
  if (value < 999_500) return `${(value / 1e3).toPrecision(3)} k`;
  return `${(value / 1e6).toPrecision(3)} M`;
}
