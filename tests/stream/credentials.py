"""Certificates, keys and credentials files for tests, made by openssl."""
import base64
import binascii
import json
import os
import subprocess
import time


def openssl(*arguments, cwd, data=None):
    return subprocess.run(['openssl', *arguments], cwd=cwd, input=data, check=True,
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout


def make_certificate(directory, name, names):
    """NAME.pem and NAME.key for the names, by authority.pem."""
    if not os.path.exists(f'{directory}/authority.pem'):
        openssl('req', '-x509', '-newkey', 'ed25519', '-nodes', '-keyout', 'authority.key', '-out',
                'authority.pem', '-subj', '/CN=authority', cwd=directory)
    with open(f'{directory}/names', 'w') as file:
        file.write(f'subjectAltName={names}')
    openssl('req', '-new', '-newkey', 'ec', '-pkeyopt', 'ec_paramgen_curve:P-256', '-nodes',
            '-keyout', f'{name}.key', '-out', f'{name}.csr', '-subj', f'/CN={name}', cwd=directory)
    openssl('x509', '-req', '-in', f'{name}.csr', '-CA', 'authority.pem', '-CAkey', 'authority.key',
            '-CAcreateserial', '-extfile', 'names', '-out', f'{name}.pem', cwd=directory)


class Key:
    """An Ed25519 key that the servers know by a text that begins with a letter for its role."""
    roles = {'operator': 14 << 3, 'account': 0, 'user': 20 << 3}
    seed_prefix = 18 << 3

    def __init__(self, directory, role):
        self.directory = directory
        self.file = f'{role}-{time.time_ns()}.key'
        openssl('genpkey', '-algorithm', 'ed25519', '-out', self.file, cwd=directory)
        prefix = self.roles[role]
        public = openssl('pkey', '-in', self.file, '-pubout', '-outform', 'DER', cwd=directory)[-32:]
        private = openssl('pkey', '-in', self.file, '-outform', 'DER', cwd=directory)[-32:]
        self.public = self.text(bytes([prefix]) + public)
        self.seed = self.text(bytes([self.seed_prefix | prefix >> 5, (prefix & 31) << 3]) + private)

    @staticmethod
    def text(data):
        checked = data + binascii.crc_hqx(data, 0).to_bytes(2, 'little')
        return base64.b32encode(checked).decode().rstrip('=')

    def sign(self, subject, name, claims):
        """A token that says so about the subject."""
        def part(value):
            text = value if isinstance(value, bytes) else json.dumps(value).encode()
            return base64.urlsafe_b64encode(text).decode().rstrip('=')
        token = part({'typ': 'JWT', 'alg': 'ed25519-nkey'}) + '.' + part({
            'jti': name, 'iat': int(time.time()), 'iss': self.public, 'sub': subject.public,
            'name': name, 'nats': {**claims, 'version': 2}})
        with open(f'{self.directory}/token', 'w') as file:
            file.write(token)
        signature = openssl('pkeyutl', '-sign', '-inkey', self.file, '-rawin', '-in', 'token',
                            cwd=self.directory)
        return f'{token}.{part(signature)}'


def write_credentials(directory, name, token, seed):
    with open(f'{directory}/{name}', 'w') as file:
        file.write(f'-----BEGIN NATS USER JWT-----\n{token}\n------END NATS USER JWT------\n\n'
                   f'-----BEGIN USER NKEY SEED-----\n{seed}\n------END USER NKEY SEED------\n')
    return name


def make_operator(directory):
    """Configures servers, in operator.conf, for one account. Returns the credentials file of a user
    of the account and one that another key has signed."""
    operator, account, system, user, foreign = (
        Key(directory, role) for role in ('operator', 'account', 'account', 'user', 'account'))
    limits = {'subs': -1, 'data': -1, 'payload': -1, 'imports': -1, 'exports': -1,
              'wildcards': True, 'conn': -1, 'leaf': -1}
    streams = {'mem_storage': -1, 'disk_storage': -1, 'streams': -1, 'consumer': -1}
    accounts = {
        account: operator.sign(account, 'edr', {'type': 'account', 'limits': {**limits, **streams}}),
        system: operator.sign(system, 'system', {'type': 'account', 'limits': limits})}
    with open(f'{directory}/operator.conf', 'w') as file:
        file.write(f'operator: {operator.sign(operator, "operator", {"type": "operator"})}\n'
                   f'system_account: {system.public}\nresolver: MEMORY\nresolver_preload {{\n' +
                   ''.join(f'  {key.public}: {token}\n' for key, token in accounts.items()) + '}\n')
    claims = {'type': 'user', 'pub': {}, 'sub': {}, 'subs': -1, 'data': -1, 'payload': -1}
    return [write_credentials(directory, name, signer.sign(user, 'host', claims), user.seed)
            for name, signer in (('right.creds', account), ('wrong.creds', foreign))]
