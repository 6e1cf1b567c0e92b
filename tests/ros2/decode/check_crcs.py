"""Checks every CRC of an MCAP file whose chunks are not packed, by zlib."""
import struct
import sys
import zlib

HEAD = 9
CHUNK, ATTACHMENT, DATA_END, FOOTER = 6, 9, 15, 2


def number(content, place, size):
    return int.from_bytes(content[place:place + size], 'little')


def check(name, stated, content):
    if stated == 0 or stated != zlib.crc32(content):
        sys.exit(f'{name}: {stated:08x} stated, {zlib.crc32(content):08x} found')


def chunk_records(content):
    name_length = number(content, 28, 4)
    assert name_length == 0, 'a chunk is packed'
    return content[32 + 8:]


data = open(sys.argv[1], 'rb').read()
chunks = attachments = 0
place = 8
while True:
    op, length = struct.unpack_from('<BQ', data, place)
    content = data[place + HEAD:place + HEAD + length]
    if op == CHUNK:
        check(f'chunk at {place}', number(content, 24, 4), chunk_records(content))
        chunks += 1
    elif op == ATTACHMENT:
        check(f'attachment at {place}', number(content, length - 4, 4), content[:-4])
        attachments += 1
    elif op == DATA_END:
        check('data', number(content, 0, 4), data[:place])
    elif op == FOOTER:
        summary_start = number(content, 0, 8)
        check('summary', number(content, 16, 4), data[summary_start:place + HEAD + 16])
        break
    place += HEAD + length
print(f'{chunks} chunks, {attachments} attachments, data and summary')
