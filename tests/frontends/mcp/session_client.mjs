import { Client } from '@modelcontextprotocol/sdk/client/index.js';
import { StdioClientTransport } from '@modelcontextprotocol/sdk/client/stdio.js';
import { visit } from './visit.mjs';

const transport = new StdioClientTransport({
    command: process.argv[2],
    env: process.env,
    stderr: 'inherit',
});
let version;
transport.setProtocolVersion = (agreed) => { version = agreed; };
const client = new Client({ name: 'session-client', version: '1' });
await client.connect(transport);
await visit(client, version);
