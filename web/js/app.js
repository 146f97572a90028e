// The page: one view at a time, selected by the fragment of the address, and a line with the state.
import {listen, live, put} from "./api.js";
import {kindOf, kinds} from "./devices.js";
import {element} from "./dom.js";
import {holds} from "./hold.js";
import {brandView, modelView, testView} from "./setup.js";
import "./panel.js";

const view = document.getElementById("view");
const status = document.getElementById("status");
let changed;

const owned = () => (live.values["/system/sources"]?.sources ?? []).filter(source => source.details?.ciCode);

function homeView() {
  const mine = element("ul", {class: "tiles"});
  const mineHead = element("h2", {}, "Set up");
  const fresh = Object.entries(kinds).map(([type, kind]) => element("li", {},
    element("a", {class: "button", href: `#/brand/${type}`, "data-type": type}, kind.name, element("small", {}, kind.note))));
  const show = () => {
    mineHead.hidden = mine.hidden = owned().length === 0;
    mine.replaceChildren(...owned().map(source => element("li", {},
      element("a", {class: "button", href: `#/remote/${source.details.ciCode}`}, source.sourceName,
              element("small", {}, `Remote control, ${source.details.ciCode}`)))));
  };
  view.append(element("h1", {tabindex: -1}, "What do you own?"), mineHead, mine,
              element("h2", {}, "Add a device"), element("ul", {class: "tiles"}, ...fresh));
  show();
  return ({path}) => path === "/system/sources" && show();
}

function remoteView(_, codeset) {
  const title = element("h1", {tabindex: -1}, "Remote control");
  const pad = element("div", {class: "remote"});
  const problem = element("p", {class: "error", role: "alert"});
  let shown;
  const forget = async () => {
    const sources = live.values["/system/sources"].sources.filter(source => source.details?.ciCode !== codeset);
    await put("/system/sources", {sources}).then(() => location.hash = "#/", error => problem.textContent = error.message);
  };
  const show = () => {
    const source = owned().find(one => one.details.ciCode === codeset);
    title.textContent = source?.sourceName ?? "Not set up";
    const kind = kindOf(source?.details.deviceType);
    pad.hidden = !source;
    if (!source || shown === kind) {
      return;
    }
    shown = kind;
    pad.replaceChildren(...Object.entries(kind.groups).map(([name, keys]) =>
      element("div", {class: keys.length === 2 ? "keys pair" : "keys", role: "group", "aria-label": name}, ...keys.map(([label, key, called]) => {
        const button = element("button", {"aria-label": called, title: called, "data-key": key}, label);
        holds(button, codeset, key, error => problem.textContent = error.message);
        return button;
      }))));
  };
  view.append(title, pad, problem, element("div", {class: "row"}, element("a", {class: "button", href: "#/"}, "All devices"),
                                           element("button", {onclick: forget}, "Forget this device")));
  show();
  return ({path}) => {
    if (path === "/system/sources") {
      show();
    }
  };
}

const views = {brand: brandView, model: modelView, test: testView, remote: remoteView};

function showView() {
  const [name, ...rest] = location.hash.replace(/^#\//, "").split("/").map(decodeURIComponent);
  const known = name === "remote" ? rest[0] : Object.hasOwn(kinds, rest[0] ?? "");
  const make = known && Object.hasOwn(views, name) ? views[name] : homeView;
  view.replaceChildren();
  changed = make(view, ...rest);
  const head = view.querySelector("h1");
  document.title = `${head.textContent} – Living room`;
  head.focus();
}

function missing() {
  const state = live.values["/remote/state"];
  if (!live.linked) {
    return "The product does not answer. Trying again…";
  }
  if (!state) {
    return "The product's controller is away; keys cannot be sent. Waiting for it…";
  }
  if (!state.service) {
    return "The service has gone. Waiting for it…";
  }
  if (!state.blaster) {
    return "The blaster is silent: the last key got no answer.";
  }
  if (!state.cloud) {
    return "The cloud is not connected. What is set up works; nothing new can be set up until it is back.";
  }
  return undefined;
}

function showStatus() {
  const trouble = missing();
  const text = trouble ?? (live.values["/remote/state"].syncing ? "Loading the blaster…" : "Connected");
  if (status.textContent !== text) {
    status.textContent = text;
  }
  status.classList.toggle("trouble", trouble !== undefined);
  document.getElementById("name").textContent = live.values["/system/info"]?.name ?? "Living room";
}

live.addEventListener("change", ({detail}) => {
  showStatus();
  changed?.(detail);
});
addEventListener("hashchange", event => new URL(event.newURL).hash !== "#view" && showView());
showView();
listen();
