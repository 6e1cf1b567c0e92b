// Changes the document only where a value differs, so that focus and selection stay.

export function byId(id) {
  return document.getElementById(id);
}

export function setText(element, text) {
  if (element.textContent !== text) element.textContent = text;
}

export function setAttribute(element, name, value) {
  if (element.getAttribute(name) !== value) element.setAttribute(name, value);
}

export function setHidden(element, hidden) {
  if (element.hidden !== hidden) element.hidden = hidden;
}

/** `children` are elements or text. */
export function make(tag, className, ...children) {
  const element = document.createElement(tag);
  if (className) element.className = className;
  element.append(...children);
  return element;
}
