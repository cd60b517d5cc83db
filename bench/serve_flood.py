#!/usr/bin/env python3
"""A running `veltara serve` under the two floods that used to hold it, with a working script
client and a newcomer timed during each: 500 cookie-less adds (16 at a time), then 32 kept-alive
connections each sending a small GET every 4 s. Usage: serve_flood.py PORT [SECONDS]"""
import http.client
import json
import sys
import threading
import time

PORT = int(sys.argv[1])
SLOW_SECONDS = float(sys.argv[2]) if len(sys.argv) > 2 else 20.0
JSON = {"Content-Type": "application/json"}
ADD = json.dumps({"OrbitalIndex": 1, "DotTarget": 500})


class Client:
    """A script client that keeps the server's cookie on one kept-alive connection."""

    def __init__(self):
        self.cookie = None
        self.conn = http.client.HTTPConnection("127.0.0.1", PORT, timeout=30)

    def send(self, method, path, body=None):
        headers = dict(JSON) if method != "GET" else {}
        if self.cookie:
            headers["Cookie"] = self.cookie
        start = time.monotonic()
        for attempt in range(2):  # a kept-alive connection may have given way: open another
            try:
                self.conn.request(method, path, body=body, headers=headers)
                reply = self.conn.getresponse()
                data = reply.read()
                break
            except (ConnectionError, http.client.HTTPException):
                self.conn.close()
                self.conn = http.client.HTTPConnection("127.0.0.1", PORT, timeout=30)
        else:
            return 0, b"", time.monotonic() - start
        cookie = reply.getheader("Set-Cookie")
        if cookie:
            self.cookie = cookie.split(";")[0]
        return reply.status, data, time.monotonic() - start


def summary(name, results):
    statuses = {}
    for status, _, _ in results:
        statuses[status] = statuses.get(status, 0) + 1
    worst = max((t for _, _, t in results), default=0.0)
    print(f"{name}: {len(results)} requests, statuses {statuses}, slowest {worst * 1000:.0f} ms")


def script_during(stop, results):
    script = Client()
    script.send("POST", "/api/orbitals", ADD)
    script.send("GET", "/api/orbitals/0/stats")
    while not stop.is_set():
        results.append(script.send("POST", "/api/orbitals/0/render", '{"Size": "Nano"}'))
        time.sleep(0.1)


def newcomer():
    client = Client()
    add = client.send("POST", "/api/orbitals", ADD)
    picture = client.send("POST", "/api/orbitals/0/render", "{}")
    return [add, picture]


def flood_of_adds():
    stop, script = threading.Event(), []
    worker = threading.Thread(target=script_during, args=(stop, script))
    worker.start()
    time.sleep(0.5)
    flood, lock, counter = [], threading.Lock(), iter(range(500))

    def adder():
        while True:
            with lock:
                if next(counter, None) is None:
                    return
            flood.append(Client().send("POST", "/api/orbitals", ADD))

    start = time.monotonic()
    adders = [threading.Thread(target=adder) for _ in range(16)]
    for t in adders:
        t.start()
    while len(flood) < 100:
        time.sleep(0.01)
    arrived = newcomer()
    for t in adders:
        t.join()
    took = time.monotonic() - start
    stop.set()
    worker.join()
    print(f"500 cookie-less adds, 16 at a time: {took:.1f} s")
    summary("  the flood's adds", flood)
    summary("  the script client's pictures meanwhile", script)
    summary("  a newcomer's add and first picture", arrived)


def slow_keep_alive():
    stop, script = threading.Event(), []
    worker = threading.Thread(target=script_during, args=(stop, script))
    worker.start()
    slow = []

    def holder():
        client = Client()
        while not stop.is_set():
            slow.append(client.send("GET", "/api/info"))
            stop.wait(4.0)

    holders = [threading.Thread(target=holder) for _ in range(32)]
    for t in holders:
        t.start()
    time.sleep(2.0)
    arrived = []
    end = time.monotonic() + SLOW_SECONDS
    while time.monotonic() < end:
        arrived += newcomer()
        time.sleep(1.0)
    stop.set()
    for t in holders + [worker]:
        t.join()
    print(f"32 kept-alive connections, a GET every 4 s each, for {SLOW_SECONDS:.0f} s:")
    summary("  the slow connections' requests", slow)
    summary("  the script client's pictures meanwhile", script)
    summary("  newcomers' adds and first pictures", arrived)


flood_of_adds()
slow_keep_alive()
