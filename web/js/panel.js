// The devices in front of the blaster, and the signals that the blaster sends.
import {live} from "./api.js";
import {element, words} from "./dom.js";

const panel = document.getElementById("panel");
const screen = element("div", {class: "screen off", role: "group", "aria-label": "The television's screen"});
const others = element("div");
const beam = element("div", {class: "beam", "aria-hidden": "true"});
const list = element("ul", {class: "light", "aria-label": "Light seen, latest first"});
panel.append(element("h2", {}, "The television"), screen, beam, element("h2", {}, "Light from the blaster"), list, others);
const seen = [];

function showScreen(tv) {
  screen.className = `screen ${tv.power ? "on" : "off"}`;
  if (!tv.power) {
    screen.replaceChildren("switched off");
    return;
  }
  screen.replaceChildren(
    element("div", {class: "top"}, element("span", {class: "channel"}, `${tv.channel}`),
            element("span", {class: "input"}, inputName(tv.input))),
    element("div", {class: "menu"}, tv.screen && tv.screen !== "none" ? `${words(`${tv.screen}`)}, row ${tv.row}, column ${tv.column}` : ""),
    element("div", {}, element("span", {class: "volume"}, tv.mute ? "Muted" : `Volume ${tv.volume}`),
            element("meter", {min: 0, max: 100, value: tv.mute ? 0 : tv.volume, "aria-label": "Volume"})));
}

const inputName = input => words(`${input}`).toUpperCase();

function describe(state) {
  if (!state.power) {
    return "switched off";
  }
  return Object.entries(state).filter(([name]) => !["power", "row", "column"].includes(name))
    .map(([name, value]) => `${words(name)} ${typeof value === "boolean" ? (value ? "yes" : "no") : value}`).join(", ");
}

function showDevices(devices) {
  const {television, ...rest} = devices ?? {};
  panel.hidden = !devices || Object.keys(devices).length === 0;
  if (television) {
    showScreen(television);
  }
  others.replaceChildren(...Object.entries(rest).map(([name, state]) =>
    element("section", {class: "device"}, element("h3", {}, `The ${words(name)}`), element("p", {}, describe(state)))));
}

function showSignal(signal) {
  const pulse = element("i", {class: signal.repeat ? "repeat" : ""});
  pulse.addEventListener("animationend", () => pulse.remove());
  beam.append(pulse);
  const text = signal.protocol === "unknown" ? `unknown, ${signal.durations} durations` : `${signal.protocol} ${signal.scancode}`;
  const what = `${text} · ${signal.carrier / 1000} kHz`;
  if (seen[0]?.what === what && signal.repeat) {
    seen[0].count += 1;
  } else {
    seen.unshift({what, count: 1});
    seen.length = Math.min(seen.length, 4);
  }
  list.replaceChildren(...seen.map(({what: line, count}) => element("li", {}, count > 1 ? `${line} · ×${count}` : line)));
}

live.addEventListener("change", ({detail: {path, body}}) => {
  if (path === "/living-room/devices") {
    showDevices(body);
  } else if (path === "/living-room/light" && body) {
    showSignal(body);
  }
});
