#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Compares a product's answers with openapi.yaml.

    check_api.py OPENAPI BIN     where BIN holds the programs

Starts the cloud, the blaster, the local API and the service in a folder of their own, goes through
every resource of the description and prints each answer that it does not describe.
"""
import http.client
import json
import pathlib
import sys
import tempfile

import jsonschema
import yaml

from product import Product

START = {"action": "ACTION_START", "deviceType": "DEVICE_TYPE_TV", "deviceBrand": "Aurora",
         "inputRoute": "INPUT_ROUTE_TV"}
CONTROL, BRANDS, DIRECT = ("/remote/integration" + end for end in ("", "/brandList", "/directEntry"))
EVENTS = "/{eventsEndpoint}"


class Check:
    """Sends requests and compares each answer with the description."""

    def __init__(self, description, port):
        self.description, self.faults, self.asked = description, [], set()
        self.connection = http.client.HTTPConnection("localhost", port, timeout=60)

    def fault(self, what):
        self.faults.append(what)

    def match(self, what, value, schema):
        resolver = jsonschema.RefResolver.from_schema(self.description)
        for error in jsonschema.Draft7Validator(schema, resolver=resolver).iter_errors(value):
            self.fault(f"{what}: {error.message}")

    def ask(self, method, path, body=None, status=200, real=None, **expected):
        """The answer's body. `real` is the requested path if the described path has a parameter."""
        text = None if body is None else body if isinstance(body, str) else json.dumps(body)
        headers = {} if body is None else {"Content-Type": "application/json"}
        self.connection.request(method, real or path, text, headers)
        answer = self.connection.getresponse()
        value = json.loads(answer.read())
        what = f"{method} {real or path} {text or ''}"
        if answer.status != status:
            self.fault(f"{what}: {answer.status} {value}, not {status}")
        for member, wanted in expected.items():
            if value.get(member) != wanted:
                self.fault(f"{what}: {member} is {value.get(member)!r}, not {wanted!r}")
        operation = self.description["paths"][path].get(method.lower())
        if operation is None:
            return value
        self.asked.add((path, method.lower()))
        name = str(status) if status == 200 else "default"
        response = operation["responses"][name]
        if "$ref" in response:
            response = self.description["components"]["responses"][response["$ref"].split("/")[-1]]
        self.match(what, value, response["content"]["application/json"]["schema"])
        return value

    def examples(self, node, path=""):
        """Checks each example of the description against its schema."""
        if isinstance(node, dict):
            examples = [entry["value"] for entry in node.get("examples", {}).values()]
            examples += [node["example"]] if "example" in node else []
            for example in examples:
                self.match(f"example {path}", example, node["schema"])
        for key, child in node.items() if isinstance(node, dict) else ():
            self.examples(child, f"{path}/{key}")


def walk(check):
    """Goes through the guided test, the lists and every refusal."""
    ask = check.ask
    ask("GET", CONTROL, sessionActive=False)
    ask("PUT", CONTROL, {}, lastResult="LAST_RESULT_ERROR")
    ask("PUT", CONTROL, {"action": "ACTION_LIST_END"}, lastResult="LAST_RESULT_ERROR")
    ask("PUT", CONTROL, {"action": "ACTION_START"}, lastResult="LAST_RESULT_ERROR")
    ask("PUT", CONTROL, '{"action": ', 400, code=0, subcode=2005)
    ask("PUT", CONTROL, START, sessionActive=True, lastResult="LAST_RESULT_CONTINUE")
    ask("PUT", CONTROL, {"action": "ACTION_SEND_KEY"}, sessionActive=True)
    ask("PUT", CONTROL, {"action": "ACTION_USER_RESPONSE", "response": "no"})
    ask("GET", CONTROL)
    ask("PUT", CONTROL, {"action": "ACTION_CANCEL"}, sessionActive=False,
        lastResult="LAST_RESULT_NONE")
    ask("PUT", CONTROL, {"action": "ACTION_COMPLETE"})
    ask("DELETE", CONTROL, status=405)
    list_file = ask("POST", BRANDS, {"deviceType": "DEVICE_TYPE_TV", "filter": "."})
    published = list_file["url"].partition("/payload/")[2]
    brands = ask("GET", "/payload/files/{name}", real="/payload/" + published)
    if "Aurora" not in brands.get("brandList", []):
        check.fault(f"the brand list lacks a brand: {brands}")
    ask("POST", BRANDS, {"deviceType": "DEVICE_TYPE_TV"}, url="", deadline="")
    ask("POST", BRANDS, "[]", 400, subcode=2005)
    entry = {"deviceType": "DEVICE_TYPE_TV", "brand": "Aurora", "model": "AU-55Q7"}
    ask("PUT", DIRECT, {"brand": "Aurora"}, lastResult="LAST_RESULT_ERROR")
    ask("PUT", DIRECT, entry, lastResult="LAST_RESULT_SUCCESS", ciCode="T2051")
    ask("GET", DIRECT, status=405)
    for path, body in (("/system/info", {"name": "x", "serialNumber": "1", "countryCode": "US"}),
                       ("/system/sources", {"sources": [{"sourceName": "A", "status": "READY"}]}),
                       ("/network/status", {"isPrimaryUp": True}),
                       ("/payload/cfg", {"stagingDirectory": "/mnt/nv/payload"}),
                       (EVENTS + "/state", {"ServiceStatus": "DATACOLLECTION_ENABLE"})):
        real = path.replace(EVENTS, "/collect")
        ask("GET", path, real=real)
        ask("DELETE", path, real=real)
        ask("GET", path, real=real, status=503)
        ask("PUT", path, body, real=real, **body)
        ask("PUT", path, "no JSON", real=real, status=400, subcode=2005)
    ask("GET", "/remote/state")
    ask("GET", "/living-room/devices")
    ask("GET", "/living-room/light")
    ask("POST", "/remote/key", {"codeset": "T2051", "key": "play", "held": True})
    ask("POST", "/remote/key", {"codeset": "T2051", "key": "play", "held": False})
    ask("POST", "/remote/key", {"codeset": "T2051", "key": "no key", "held": True}, 400)
    ask("POST", "/payload/publish", {"fileName": "absent", "lifeSpanSec": 1}, 404)
    ask("POST", "/payload/publish", {}, 400, subcode=2005)
    ask("POST", EVENTS, {"type": "a"}, real="/collect", delivered=True)


def main():
    description = yaml.safe_load(pathlib.Path(sys.argv[1]).read_text())
    binaries = pathlib.Path(sys.argv[2])
    with tempfile.TemporaryDirectory() as root:
        product = Product(binaries, root)
        try:
            port = product.bring_up("--events", str(product.root / "events"))
            controller = product.start("ProductController", "serve", ORLU_PORTICO_PORT=str(port))
            product.wait_for(controller, "ready")
            check = Check(description, port)
            walk(check)
        finally:
            product.end()
        events = (pathlib.Path(root) / "events").read_text()
    check.examples(description)
    if '"control-integration-start"' not in events:
        check.fault(f"no usage event of the start: {events}")
    for path, item in description["paths"].items():
        for method in ("get", "put", "post", "delete"):
            if method in item and (path, method) not in check.asked and path != "/events":
                check.fault(f"{method} {path} was not asked")
    print("\n".join(check.faults) or f"{len(check.asked)} operations answer as described")
    sys.exit(1 if check.faults else 0)


main()
