"""What the tests of streams work with: hosts, publishers and the servers that with-nats started."""
import base64
import json
import os
import re
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import urllib.request

host = os.path.abspath(sys.argv[1])
events = int(sys.argv[2])
recorder = os.path.join(os.path.dirname(host), '../lib/TestRecorder.so')
work = tempfile.mkdtemp(prefix='stream-test.')
servers = os.environ['NATS_SERVERS']
directory = os.environ['NATS_DIRECTORY']
port = int(os.environ['NATS_PORT'])
plug_in = 'host.Pipelines.Main.Functions.DataDump.Module'
keys = ['--key', 'A_NUMBER', '--key', 'GPRS=B_NUMBER']
started = []
hosts = []


def check(condition, what):
    if not condition:
        raise AssertionError(what)


def wait_for(condition, seconds, what):
    end = time.monotonic() + seconds
    while not condition():
        check(time.monotonic() < end, what() if callable(what) else what)
        time.sleep(0.1)


def path(name):
    return f'{work}/{name}'


def read(name):
    with open(path(name)) as file:
        return file.read()


def write(name, text):
    with open(path(name), 'w') as file:
        file.write(text)
    return name


# Hosts

def run(*arguments):
    return subprocess.run([host, *arguments], cwd=work, capture_output=True, text=True, timeout=600)


def call(*arguments, expect=0):
    done = run(*arguments)
    check(expect is None or done.returncode == expect,
          f'{arguments}: exit {done.returncode}, expected {expect}\n{done.stdout}{done.stderr}')
    return done.stdout + done.stderr


def start(command):
    process = subprocess.Popen(command, cwd=work, stdout=subprocess.DEVNULL)
    started.append(process)
    return process


def end_all():
    """Ends what was started, so that nobody writes to the directory any more."""
    for process in started:
        process.kill()
        process.wait()


def interrupt(process):
    """Sends SIGTERM once the program takes it; while it begins, it would just be killed."""
    def is_taken():
        with open(f'/proc/{process.pid}/status') as status:
            blocked = int(re.search(r'SigBlk:\s+(\w+)', status.read()).group(1), 16)
        return bool(blocked & 1 << signal.SIGTERM - 1)
    wait_for(lambda: process.poll() is not None or is_taken(), 60, 'it never takes signals')
    process.terminate()


def stream_input(stream, partitions, of, state, more=''):
    more = more if 'Servers:' in more else f'Servers: {servers}{more and ", " + more}'
    return (f"{{Stream: {{Name: {stream}, Partitions: '{partitions}', Of: {of}, "
            f'StateDirectory: {state}, {more}}}}}')


def generate():
    """registry.yaml, events.jsonl and the database, once."""
    if not os.path.exists(path('registry.yaml')):
        call('generate', '--output', work, '--events', str(events))
        subprocess.run(['sh', '-c', 'cat reference-schema.sql reference-data.sql | '
                        'sqlite3 reference.db'], cwd=work, check=True)


def registry(name, stream, partitions, of, state, more=''):
    """A registry like that of the generated files, but with a stream as its input."""
    generate()
    lines = f'      Input: {stream_input(stream, partitions, of, state, more)}\n'
    return write(name, re.sub(r'      Input:\n        Files:.*\n', lambda _: lines,
                              read('registry.yaml')))


def recorder_registry(name, stream, partitions, of, state, record, more='', keys_of_host=''):
    """A registry of a pipeline that does nothing but record what it processes."""
    write('edr.yaml', 'DETAIL: {KEY: text, NUMBER: text, TEXT: text}\n')
    return write(name, f"""host:
{keys_of_host}
  DataPool:
  Pipelines:
    Main:
      EdrDescription: edr.yaml
      BatchSize: 100
      Input: {stream_input(stream, partitions, of, state, more)}
      Functions:
        Recorder: {{ModuleName: TestRecorder, Library: {recorder}, Module: {{File: {path(record)}}}}}
""")


def create(registry_file):
    call('stream', 'create', registry_file, 'Main')


def publish(registry_file, *files, expect=0):
    return call('publish', registry_file, 'Main', *files, *keys, expect=expect)


def shown(registry_file, key):
    """What stream show shows of each partition, once the servers that lead them are elected."""
    end = time.monotonic() + 60
    while True:
        done = run('stream', 'show', registry_file, 'Main', '--json')
        if done.returncode == 0:
            return [partition[key] for partition in json.loads(done.stdout)['Partitions']]
        check(time.monotonic() < end, f'stream show: exit {done.returncode}\n{done.stderr}')
        time.sleep(0.1)


def lags(registry_file):
    """How many messages of each partition are not processed."""
    return shown(registry_file, 'Lag')


def wait_until_read(registry_file, seconds=120):
    def is_read():
        ends = [each.process.poll() or 0 for each in hosts if each.registry == registry_file]
        check(max(ends, default=0) <= 0, f'a host ended with {max(ends, default=0)}')
        return not any(lags(registry_file))
    wait_for(is_read, seconds, lambda: f'lags {lags(registry_file)}')


def places(file, partitions=4):
    """Sequence and lines of each partition."""
    records = [record for record in re.split('[\n\0]+', read(file)) if record]
    found = [tuple(int(part) for part in record.split()[:2]) for record in records]
    return found + [(1, 0)] * (partitions - len(found))


class Host:
    """A host that runs until it is ended; its log is in NAME.log, its summary in NAME.out."""

    def __init__(self, name, registry_file, *arguments):
        self.log = f'{name}.log'
        self.out = f'{name}.out'
        self.registry = registry_file
        with open(path(self.out), 'w') as out, open(path(self.log), 'a') as log:
            self.process = subprocess.Popen([host, 'run', registry_file, '--json', *arguments],
                                            cwd=work, stdout=out, stderr=log)
        started.append(self.process)
        hosts.append(self)

    def logged(self):
        return read(self.log)

    def wait_for(self, text, seconds=60, count=1):
        def is_there():
            check(self.process.poll() is None, f'the host ended:\n{self.logged()[-3000:]}')
            return self.logged().count(text) >= count
        wait_for(is_there, seconds, lambda: f'no {text}:\n{self.logged()[-3000:]}')

    def end(self, expect=0):
        """Returns how many EDRs it read."""
        self.process.terminate()
        return self.wait_for_end(expect)

    def wait_for_end(self, expect=0):
        """Waits for it, and returns how many EDRs it read."""
        code = self.process.wait(120)
        check(code == expect, f'exit {code}, expected {expect}:\n{self.logged()[-3000:]}')
        return int(re.search(r'"Read": (\d+)', read(self.out)).group(1))

    def kill(self):
        self.process.kill()
        self.process.wait()

    def kilobytes(self):
        """The most memory that it had."""
        with open(f'/proc/{self.process.pid}/status') as status:
            return int(re.search(r'VmHWM:\s+(\d+)', status.read()).group(1))


def explain():
    """Prints how all stands when a test has failed, before anything is ended."""
    def heading(text):
        print(f'--- {text}')
    tail = 4000  # characters
    for name in sorted({each.log for each in hosts}):
        ends = [each.process.poll() for each in hosts if each.log == name]
        heading(f'{name}, of processes with the exit codes {ends}')
        print(read(name)[-tail:])
    for name in sorted({each.registry for each in hosts}):
        heading(f'stream show {name}')
        try:
            shown_now = subprocess.run([host, 'stream', 'show', name, 'Main'], cwd=work, text=True,
                                       stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=30)
            print(shown_now.stdout)
        except subprocess.TimeoutExpired:
            print('no answer within 30 s')
    for number in (1, 2, 3):
        heading(f'server {number}, healthy: {is_healthy(number)}')
        print(server_log(number)[-tail:], flush=True)


# EDRs

def line_count(file='events.jsonl'):
    return sum(1 for _ in open(path(file)))


def numbered_edrs(name, first, count, number_of_keys=997):
    """EDRs that a recorder knows by key and number."""
    with open(path(name), 'w') as file:
        for number in range(first, first + count):
            file.write(f'{{"KEY":"k{number * 7919 % number_of_keys}","NUMBER":"{number}",'
                       f'"TEXT":"{"text " * (number % 40)}"}}\n')
    return name


def recorded(name):
    """The batches that a recorder wrote, lists of (key, number)."""
    return [[(key, int(number)) for key, number in (edr.split(':') for edr in line.split())]
            for line in read(name).splitlines()]


def random_edrs(name, first, count, size):
    """Numbered EDRs that can't be compressed to less than half."""
    with open(path(name), 'w') as file:
        for number in range(first, first + count):
            file.write(f'{{"KEY":"k{number % 97}","NUMBER":"{number}",'
                       f'"TEXT":"{os.urandom(size // 2).hex()}"}}\n')
    return name


# Servers

def start_server(number):
    process = subprocess.Popen(['sh', f'{directory}/{number}.start'])
    with open(f'{directory}/{number}.pid', 'w') as file:
        file.write(str(process.pid))
    started_servers[number] = process


started_servers = {}


def has_ended(pid):
    """Also one whose parent hasn't asked yet. A process whose first thread is gone may have others,
    which keep its ports."""
    try:
        with open(f'/proc/{pid}/stat') as file:
            is_zombie = file.read().rpartition(')')[2].split()[0] == 'Z'
        return is_zombie and len(os.listdir(f'/proc/{pid}/task')) == 1
    except (FileNotFoundError, ProcessLookupError):  # the latter when it goes while it is read
        return True


def signal_server(number, which):
    """Returns its process."""
    with open(f'{directory}/{number}.pid') as file:
        pid = int(file.read())
    os.kill(pid, which)
    return pid


def kill_server(number):
    pid = signal_server(number, signal.SIGKILL)
    wait_for(lambda: has_ended(pid), 30, f'the killed server {number} runs')
    if number in started_servers:
        started_servers.pop(number).wait()


class ClosingServer:
    """Takes connections in the place of a server and closes them at once, as what forwards them to
    a server that is away does."""

    def __init__(self, number):
        self.listener = socket.create_server(('127.0.0.1', port + number))
        self.thread = threading.Thread(target=self.serve)
        self.thread.start()

    def serve(self):
        try:
            while True:
                self.listener.accept()[0].close()
        except OSError:  # by end
            pass

    def end(self):
        self.listener.shutdown(socket.SHUT_RDWR)
        self.thread.join()
        self.listener.close()


def server_log(number):
    with open(f'{directory}/{number}.log') as log:
        return log.read()


def is_healthy(number):
    try:
        with urllib.request.urlopen(f'http://127.0.0.1:{port + 20 + number}/healthz',
                                    timeout=1) as answer:
            return b'"ok"' in answer.read()
    except OSError:
        return False


def client_count(number):
    with urllib.request.urlopen(f'http://127.0.0.1:{port + 20 + number}/connz') as answer:
        return json.load(answer)['num_connections']


def wait_until_healthy(*numbers):
    wait_for(lambda: all(is_healthy(number) for number in numbers), 60,
             lambda: f'servers are not healthy:\n{server_log(numbers[0])[-3000:]}')


def reconfigure(text='', replaced=()):
    """Starts all servers again with texts of their configuration replaced, and the text after it."""
    for number in (1, 2, 3):
        kill_server(number)
        with open(f'{directory}/{number}.conf') as file:
            configuration = file.read()
        for before, after in replaced:
            configuration = configuration.replace(before, after)
        with open(f'{directory}/{number}.conf', 'w') as file:
            file.write(configuration + text)
    for number in (1, 2, 3):
        start_server(number)
    wait_until_healthy(1, 2, 3)


class Requests:
    """Speaks the servers' own protocol, as an administrator's tool does."""

    file = None

    def connect(self):
        self.socket = socket.create_connection(('127.0.0.1', port + 1), timeout=10)
        self.file = self.socket.makefile('rwb')
        self.file.readline()
        self.file.write(b'CONNECT {"verbose":false,"headers":true}\r\nSUB in.> 1\r\n')

    def send(self, subject, payload=b'', headers=None):
        """The answer's text."""
        text = self.answer(subject, payload, headers)
        check('"error"' not in text, f'{subject}: {text}')
        return text

    def ask(self, subject, payload=b''):
        """The answer to what changes nothing. While they elect, servers answer with an error, or not
        at all."""
        end = time.monotonic() + 60
        while True:
            try:
                return self.send(subject, payload)
            except (AssertionError, OSError) as problem:
                check(time.monotonic() < end, f'{subject}: {problem}')
                self.file = None  # what came late would be taken for the next answer
                time.sleep(0.2)

    def answer(self, subject, payload, headers):
        if self.file is None:
            self.connect()
        if headers is None:
            self.file.write(f'PUB {subject} in.1 {len(payload)}\r\n'.encode() + payload + b'\r\n')
        else:
            block = 'NATS/1.0\r\n' + ''.join(f'{k}: {v}\r\n' for k, v in headers.items()) + '\r\n'
            self.file.write(f'HPUB {subject} in.1 {len(block)} {len(block) + len(payload)}\r\n'
                            .encode() + block.encode() + payload + b'\r\n')
        self.file.flush()
        while True:
            line = self.file.readline().split()
            if not line:
                raise ConnectionError(f'{subject}: the server closed the connection')
            if line[0] == b'PING':
                self.file.write(b'PONG\r\n')
                self.file.flush()
            elif line[0] == b'MSG':
                return self.file.read(int(line[-1]) + 2)[:-2].decode()

    def update(self, stream, **changes):
        """Changes the stream's configuration; a change to None takes a part out of it."""
        info = json.loads(self.ask(f'$JS.API.STREAM.INFO.{stream}'))
        config = {**info['config'], **changes}
        self.send(f'$JS.API.STREAM.UPDATE.{stream}',
                  json.dumps({key: value for key, value in config.items()
                              if value is not None}).encode())

    def messages(self, stream):
        """The data of all messages of a stream, in their order."""
        last = json.loads(self.ask(f'$JS.API.STREAM.INFO.{stream}'))['state']['last_seq']
        for sequence in range(1, last + 1):
            answer = self.ask(f'$JS.API.STREAM.MSG.GET.{stream}',
                              json.dumps({'seq': sequence}).encode())
            yield base64.b64decode(json.loads(answer)['message'].get('data', ''))


def unpacked(data):
    """By another program than the host."""
    return subprocess.run(['zstd', '-dc'], input=data, stdout=subprocess.PIPE, check=True).stdout


def unpacked_messages(stream):
    return [unpacked(data) for data in Requests().messages(stream)]


def lines_of_stream(stream, partition):
    """All lines of a partition."""
    data = b''.join(Requests().messages(f'EDR_{stream}_{partition}'))
    return [] if not data else unpacked(data).decode().splitlines()
