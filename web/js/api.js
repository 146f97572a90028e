// The local API: requests, and values with their changes. The page uses no other interface.
const told = ["/remote/state", "/system/sources", "/system/info", "/living-room/devices"];

export class ApiError extends Error {}

export async function ask(method, path, body) {
  const options = {method, headers: {}};
  if (body !== undefined) {
    options.body = JSON.stringify(body);
    options.headers["Content-Type"] = "application/json";
  }
  let answer;
  try {
    answer = await fetch(path, options);
  } catch {
    throw new ApiError("The product does not answer.");
  }
  const json = await answer.json().catch(() => ({}));
  if (!answer.ok) {
    throw new ApiError(answer.status === 503 ? "The service is away." : json.message ?? `Refused (${answer.status}).`);
  }
  return json;
}

export const get = path => ask("GET", path);
export const put = (path, body) => ask("PUT", path, body);
export const post = (path, body) => ask("POST", path, body);

// The values of the paths above, undefined until known. A `change` event has the path and its value.
export const live = Object.assign(new EventTarget(), {linked: false, values: {}});

function tell(path, body) {
  if (path) {
    live.values[path] = body ?? undefined;
  }
  live.dispatchEvent(new CustomEvent("change", {detail: {path, body}}));
}

async function refresh(path) {
  tell(path, await get(path).catch(() => undefined));
}

export function listen() {
  const events = new EventSource("/events");
  events.onopen = () => {
    live.linked = true;
    tell();
    told.forEach(refresh);
  };
  events.onmessage = event => {
    const {path, body} = JSON.parse(event.data);
    tell(path, body);
  };
  events.onerror = () => {
    live.linked = false;
    tell();
    if (events.readyState === EventSource.CLOSED) {
      setTimeout(listen, 1000);
    }
  };
}
