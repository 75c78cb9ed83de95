import { Client } from '@modelcontextprotocol/client';
import { StdioClientTransport } from '@modelcontextprotocol/client/stdio';
import { visit } from './visit.mjs';

const client = new Client({ name: 'stateless-client', version: '1' }, { versionNegotiation: { mode: 'auto' } });
await client.connect(new StdioClientTransport({ command: process.argv[2], env: process.env, stderr: 'inherit' }));
await visit(client, client.getNegotiatedProtocolVersion());
