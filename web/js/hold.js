import {post} from "./api.js";
import {byCec} from "./devices.js";

// The product releases a key whose request is not repeated within a second.
const renewEvery = 400;

// Makes a button press and hold its key, by pointer, by keyboard, and by a click without either.
export function holds(button, codeset, key, failed) {
  let timer, queue = Promise.resolve();
  const say = held => {
    queue = queue.then(() => post("/remote/key", {codeset: byCec(key) ? "" : codeset, key, held})).catch(failed);
  };
  const press = () => {
    if (timer === undefined) {
      timer = setInterval(() => say(true), renewEvery);
      button.classList.add("held");
      say(true);
    }
  };
  const release = () => {
    if (timer !== undefined) {
      clearInterval(timer);
      timer = undefined;
      button.classList.remove("held");
      say(false);
    }
  };
  const isPress = event => event.key === "Enter" || event.key === " ";
  button.addEventListener("pointerdown", event => {
    if (event.button === 0) {
      button.setPointerCapture(event.pointerId);
      press();
    }
  });
  for (const end of ["pointerup", "pointercancel", "lostpointercapture", "blur"]) {
    button.addEventListener(end, release);
  }
  button.addEventListener("keydown", event => {
    if (isPress(event)) {
      event.preventDefault();
      press();
    }
  });
  button.addEventListener("keyup", event => isPress(event) && release());
  button.addEventListener("contextmenu", event => event.preventDefault());
  // A click of a pointer or the keyboard has pressed the key already. A screen reader's click has no such
  // events.
  button.addEventListener("click", event => {
    if (event.detail === 0 && !event.pointerType) {
      press();
      release();
    }
  });
  addEventListener("blur", release);
  document.addEventListener("visibilitychange", release);
}
