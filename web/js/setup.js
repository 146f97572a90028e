// Set-up of a device: brand, guided test, brand and model.
import {get, live, post, put} from "./api.js";
import {kinds} from "./devices.js";
import {element, words} from "./dom.js";

const control = "/remote/integration";
const act = (action, more) => put(control, {action, ...more});

export const go = (...parts) => {
  location.hash = `#/${parts.map(encodeURIComponent).join("/")}`;
};

// Runs an action of a view with its controls disabled, and shows its error.
function runner(area, problem) {
  return async action => {
    const controls = [...area.querySelectorAll("button")].filter(button => !button.disabled);
    controls.forEach(button => button.disabled = true);
    problem.textContent = "";
    const slow = setTimeout(() => problem.textContent = "The blaster is silent; still waiting for its answer…", 5000);
    try {
      await action();
    } catch (error) {
      problem.textContent = error.message;
    }
    clearTimeout(slow);
    controls.forEach(button => button.disabled = false);
  };
}

async function keep(type, brand, ciCode) {
  const {short, name} = kinds[type];
  const {sources = []} = await get("/system/sources");
  const kept = sources.filter(source => source.details?.ciCode !== ciCode && source.details?.deviceType !== short);
  kept.push({sourceName: `${brand} ${name}`, sourceAccountName: short, status: "READY", details: {ciCode, deviceType: short}});
  await put("/system/sources", {sources: kept});
  go("remote", ciCode);
}

export function brandView(view, type) {
  const kind = kinds[type];
  const filter = element("input", {id: "filter", type: "search", autocomplete: "off", spellcheck: "false"});
  const count = element("p", {class: "quiet", role: "status"}, "Looking for brands…");
  const list = element("ul", {class: "brands", "aria-label": "Brands"});
  const problem = element("p", {class: "error", role: "alert"});
  let brands = [];
  const show = () => {
    const text = filter.value.trim().toLowerCase();
    const found = brands.filter(brand => brand.toLowerCase().includes(text));
    list.replaceChildren(...found.map(brand => element("li", {}, element("button", {onclick: () => go("test", type, brand)}, brand))));
    count.textContent = `${found.length} of ${brands.length} brands`;
  };
  filter.addEventListener("input", show);
  const load = async () => {
    try {
      const {url} = await post(`${control}/brandList`, {deviceType: type, filter: "."});
      if (!url) {
        throw new Error("There is no list of brands now. It needs the cloud.");
      }
      brands = (await get(new URL(url).pathname)).brandList ?? [];
      problem.textContent = "";
      show();
    } catch (error) {
      count.textContent = "";
      problem.textContent = error.message;
    }
  };
  view.append(
    element("h1", {tabindex: -1}, `Which brand is ${kind.the}?`),
    element("label", {for: "filter"}, "Type to filter"), filter, count, problem, list,
    element("div", {class: "row"},
            element("a", {class: "button", href: `#/model/${type}`}, "I know brand and model"),
            element("a", {class: "button", href: "#/"}, "Back")));
  load();
  // When the cloud is connected again, the list is loaded.
  return ({path}) => path === "/remote/state" && !brands.length && live.values[path]?.cloud && load();
}

export function modelView(view, type) {
  const brand = element("input", {id: "brand", autocomplete: "off", required: true});
  const model = element("input", {id: "model", autocomplete: "off", required: true});
  const problem = element("p", {class: "error", role: "alert"});
  const form = element("form", {}, element("label", {for: "brand"}, "Brand"), brand,
                       element("label", {for: "model"}, "Model"), model, problem,
                       element("div", {class: "row"}, element("button", {class: "primary"}, "Set up"),
                               element("a", {class: "button", href: `#/brand/${type}`}, "Back")));
  const run = runner(form, problem);
  form.addEventListener("submit", event => {
    event.preventDefault();
    run(async () => {
      const answer = await put(`${control}/directEntry`, {deviceType: type, brand: brand.value.trim(), model: model.value.trim()});
      if (answer.lastResult !== "LAST_RESULT_SUCCESS" || !answer.ciCode) {
        throw new Error(live.values["/remote/state"]?.cloud === false ? "This needs the cloud, which is not connected."
                                                                      : "Nothing is known of this model. Try the guided test.");
      }
      await keep(type, brand.value.trim(), answer.ciCode);
    });
  });
  view.append(element("h1", {tabindex: -1}, `Brand and model of ${kinds[type].the}`),
              element("p", {class: "quiet"}, "They stand on a label at its back or below it."), form);
}

export function testView(view, type, brand) {
  const {the} = kinds[type];
  const area = element("div", {class: "question"});
  const problem = element("p", {class: "error", role: "alert"});
  const progress = element("progress", {"aria-label": "Code sets tried", max: 1, value: 0});
  const count = element("p", {class: "quiet"});
  const title = element("h1", {tabindex: -1}, `${brand}: does ${the} react?`);
  const run = runner(view, problem);

  // A completed test lets the service send the product's keys again at once; a cancelled one does not.
  const leave = where => run(async () => {
    if ((await get(control)).sessionActive) {
      await act("ACTION_COMPLETE");
    }
    location.hash = where;
  });

  const show = (heading, text, ...buttons) => {
    const head = element("h2", {tabindex: -1}, heading);
    area.replaceChildren(head, element("p", {}, text), element("div", {class: "row answers"}, ...buttons));
    head.focus();
  };

  const send = async () => {
    const answer = await act("ACTION_SEND_KEY");
    if (answer.lastResult === "LAST_RESULT_ERROR") {
      throw new Error("The blaster did not take the key.");
    }
  };

  async function next(state) {
    progress.max = Math.max(state.numTested ?? 1, 1);
    progress.value = state.numCompleted ?? 0;
    count.textContent = `${state.numCompleted ?? 0} of ${state.numTested ?? 0} code sets ruled out`;
    if (state.lastResult === "LAST_RESULT_SUCCESS" && state.ciCode) {
      await act("ACTION_COMPLETE");
      await keep(type, brand, state.ciCode);
    } else if (state.lastResult === "LAST_RESULT_CONTINUE") {
      await send();
      ask(state);
    } else {
      show("None of them fits", `No code set of ${brand} moves ${the}. Is the brand right, and the blaster in sight of it?`,
           element("button", {class: "primary", onclick: () => leave(`#/brand/${type}`)}, "Another brand"),
           element("button", {onclick: () => leave(`#/model/${type}`)}, "Enter the model"));
    }
  }

  function ask(state) {
    const respond = response => run(async () => next(await act("ACTION_USER_RESPONSE", {response})));
    show(`Did ${the} react?`, `The blaster has just sent: ${words(state.nextKeyToTest ?? "a key")}.`,
         element("button", {class: "primary yes", onclick: () => respond("USER_RESPONSE_WORKED")}, "Yes"),
         element("button", {class: "no", onclick: () => respond("USER_RESPONSE_DID_NOT_WORK")}, "No"),
         element("button", {onclick: () => run(send)}, "Send it again"));
  }

  const start = () => run(async () => {
    const state = await act("ACTION_START", {deviceType: type, deviceBrand: brand, inputRoute: "INPUT_ROUTE_TV"});
    if (state.lastResult !== "LAST_RESULT_CONTINUE") {
      throw new Error(live.values["/remote/state"]?.cloud === false ? "This needs the cloud, which is not connected."
                                                                    : "The test could not begin. Try again, or enter the model.");
    }
    await next(state);
  });

  view.append(title, progress, count, area, problem,
              element("div", {class: "row"},
                      element("button", {onclick: () => leave(`#/brand/${type}`)}, "Back"),
                      element("button", {onclick: () => leave("#/")}, "Cancel")));
  show("Ready?", `Point the blaster at ${the}. It sends one key after the other; each time, say whether something happened.`,
       element("button", {class: "primary", onclick: start}, "Send the first key"));
  get(control).then(state => {
    if (state.sessionActive && state.nextKeyToTest) {
      ask(state);
    }
  }).catch(() => {});
}
