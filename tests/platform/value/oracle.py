# A second opinion on property lists: Python's own reader and writer.
#   oracle.py FILE...  prints what each file holds, a line each, and writes it again as FILE.binary and FILE.xml
import datetime
import plistlib
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


for name in sys.argv[1:]:
    with open(name, 'rb') as source:
        value = plistlib.load(source)
    print(spelled(value))
    for ending, form in ('binary', plistlib.FMT_BINARY), ('xml', plistlib.FMT_XML):
        with open('%s.%s' % (name, ending), 'wb') as file:
            plistlib.dump(value, file, fmt=form)
