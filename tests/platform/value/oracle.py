# A second opinion on property lists: Python's own reader and writer.
#   oracle.py read FILE...        prints what each file holds, a line each
#   oracle.py write FOLDER COUNT  writes N.binary, N.xml and N.txt (what they hold), for N below COUNT
import datetime
import plistlib
import random
import struct
import sys

EPOCH = datetime.datetime(1970, 1, 1)


def spelled(value):
    if isinstance(value, bool):
        return 'b%d' % value
    if isinstance(value, int):
        return 'i%d' % value
    if isinstance(value, float):
        return 'r' + struct.pack('>d', value).hex()
    if isinstance(value, str):
        return 's' + value.encode().hex()
    if isinstance(value, bytes):
        return 'd' + value.hex()
    if isinstance(value, datetime.datetime):
        return 't%d' % ((value - EPOCH) // datetime.timedelta(seconds=1))
    if isinstance(value, list):
        return '(' + ','.join(map(spelled, value)) + ')'
    return '{' + ','.join(spelled(k) + '=' + spelled(value[k])
                          for k in sorted(value, key=str.encode)) + '}'


# No -0.0: this writer takes it for 0.0.
CORNERS = [
    -2**63, -2**63 + 1, -2**31, -1, 0, 127, 128, 255, 256, 65535, 65536, 2**31, 2**32 - 1, 2**32,
    2**63 - 1, 2**63, 2**64 - 1, 0.0, 0.1, 5e-324, 1.7976931348623157e308, float('inf'),
    True, False, '', 'a' * 14, 'a' * 15, 'é' * 15, '\U0001F600', '\U0010FFFF', 'x' * 70000, b'', b'\0' * 300,
    datetime.datetime(1604, 5, 1), datetime.datetime(1920, 2, 29, 23, 59, 59),
    datetime.datetime(2150, 12, 31, 12), datetime.datetime(1, 1, 1), datetime.datetime(9999, 12, 31),
    [], {}, [[]], {'': ''}, list(range(300)), {'k%d' % n: n for n in range(300)},
]


def made(rng, depth):
    kind = rng.randrange(8 if depth else 6)
    if kind == 0:
        return rng.choice(CORNERS[:34])
    if kind == 1:
        return rng.randrange(-2**63, 2**64) >> rng.randrange(64)
    if kind == 2:
        return rng.uniform(-1e9, 1e9)
    if kind == 3:
        return ''.join(rng.choice('ab &<>"\n\téΩ漢\U0001F600') for _ in range(rng.randrange(30)))
    if kind == 4:
        return rng.randbytes(rng.randrange(200))
    if kind == 5:
        return EPOCH + datetime.timedelta(seconds=rng.randrange(-6 * 10**10, 2 * 10**11))
    if kind == 6:
        return [made(rng, depth - 1) for _ in range(rng.randrange(20))]
    return {made_key(rng): made(rng, depth - 1) for _ in range(rng.randrange(20))}


def made_key(rng):
    return ''.join(rng.choice('abcdé\U0001F600') for _ in range(rng.randrange(8)))


def write(folder, count):
    rng = random.Random(20)
    for n in range(count):
        value = CORNERS if n == 0 else made(rng, 4)
        with open('%s/%d.txt' % (folder, n), 'w') as file:
            file.write(spelled(value))
        for name, form in ('binary', plistlib.FMT_BINARY), ('xml', plistlib.FMT_XML):
            with open('%s/%d.%s' % (folder, n, name), 'wb') as file:
                plistlib.dump(value, file, fmt=form)


if sys.argv[1] == 'read':
    for name in sys.argv[2:]:
        with open(name, 'rb') as source:
            print(spelled(plistlib.load(source)))
else:
    write(sys.argv[2], int(sys.argv[3]))
