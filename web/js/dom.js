// element("button", {class: "primary", onclick: f}, "text", child…)
export function element(name, attributes = {}, ...children) {
  const made = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) {
    if (key.startsWith("on")) {
      made.addEventListener(key.slice(2), value);
    } else if (value === true) {
      made.setAttribute(key, "");
    } else if (value !== false && value !== undefined) {
      made.setAttribute(key, value);
    }
  }
  made.append(...children.filter(child => child !== undefined));
  return made;
}

export const words = name => name.replace(/^O_KEY_/, "").replaceAll("_", " ").toLowerCase();
