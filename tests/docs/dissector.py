#!/usr/bin/env python3
"""dissector.py CAPTURE: tshark with docs/wireshark/tavrik.lua says of each datagram what tavrikctl decode says, field by
field, and what is none of ours stays what it is: a DNS query and the first packet of a QUIC connection are added."""
import json
import struct
import subprocess
import sys

capture, ctl, script = sys.argv[1:4]
DNS = bytes.fromhex("123401000001000000000000") + b"\x05board\x04site\x00\x00\x01\x00\x01"
QUIC = bytes.fromhex("c300000001088394c8f03e5157080000449e") + bytes(range(256)) * 5


def packet(to_port, payload):
    udp = struct.pack(">HHHH", 40000, to_port, 8 + len(payload), 0) + payload
    return struct.pack(">BBHHHBBH4s4s", 0x45, 0, 20 + len(udp), 0, 0, 64, 17, 0, b"\x0a\0\0\1", b"\x0a\0\0\2") + udp


def foreign(path):
    with open(path, "ab") as file:
        for port, payload in ((53, DNS), (443, QUIC)):
            frame = packet(port, payload)
            file.write(struct.pack("<IIII", 4000000, 0, len(frame), len(frame)) + frame)


def layers(*options):
    run = subprocess.run(["tshark", "-r", capture, "-T", "json", "-x", "--no-duplicate-keys", *options],
                         capture_output=True, text=True, check=True)
    return [frame["_source"]["layers"] for frame in json.loads(run.stdout)]


def protocols(frame):
    return [name for name in frame if not name.endswith("_raw") and name != "_ws.lua.fake"]


def shown(layer):
    """Of the dissector: {(name, offset in the datagram, size, value)}."""
    found = set()
    for key, value in layer.items():
        raw = layer.get(key + "_raw")
        if raw is not None:
            several = isinstance(raw[0], list)
            for (_, at, size, *_), one in zip(raw if several else [raw], value if several else [value]):
                found.add((key.removeprefix("tavrik."), at - 28, size, one))
    return found


foreign(capture)
decoded = subprocess.run([ctl, "decode", "--json", capture], capture_output=True, text=True, check=True).stdout
ours = [json.loads(line) for line in decoded.splitlines()]
plain, with_ours = layers(), layers("-X", "lua_script:" + script)
mistakes, seen = 0, 0
for before, frame in zip(plain, with_ours):
    if "tavrik" not in frame:
        if protocols(before) != protocols(frame):
            mistakes += 1
            print("changed:", protocols(before), "->", protocols(frame))
        continue
    if seen == len(ours):
        sys.exit("the dissector takes more than tavrikctl")
    expected = ours[seen]
    seen += 1
    layer = frame["tavrik"]
    wanted = {(f["name"], f["at"], f["size"], f["value"]) for f in expected["fields"]}
    got = shown(layer)
    if layer["tavrik.message"] != expected["name"] or wanted != got:
        mistakes += 1
        print(expected["name"], expected["words"], "\n  decode alone:", wanted - got, "\n  dissector alone:", got - wanted)
last = [protocols(frame) for frame in with_ours[-2:]]
if seen != len(ours) or seen < 100 or "dns" not in last[0] or "quic" not in last[1]:
    mistakes += 1
    print(f"{seen} of {len(ours)} datagrams; the foreign ones are {last}")
names = len({one["name"] for one in ours})
print(f"{seen} datagrams of {names} kinds, each field as tavrikctl has it, {len(plain) - seen} left alone")
sys.exit(mistakes > 0)
