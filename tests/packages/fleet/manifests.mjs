// Holds manifests against the schema of their kinds, without a cluster and without a network.
//   node manifests.mjs FILE.yaml OUT.ts       (from a copy beside the folder node_modules)
// The validators of kubernetes-models, made from the published schema, judge types, formats and what must be there. They
// let a misspelt name pass; so the manifests are also written to OUT as TypeScript, for a compiler to hold against
// the types of the same schema.
import { readFileSync, writeFileSync } from "node:fs";
import { parseAllDocuments } from "yaml";

const [file, out] = process.argv.slice(2);
const lines = [];
let bad = 0;
for (const document of parseAllDocuments(readFileSync(file, "utf8"))) {
    const manifest = document.toJS();
    const { kind, apiVersion } = manifest;
    const module = `kubernetes-models/${apiVersion}/${kind}`;
    try {
        if (document.errors.length > 0) throw document.errors[0];
        const model = await import(module);
        new model[kind](manifest).validate();
    } catch (error) {
        console.log(`${file}: ${kind}: ${error.message}`);
        bad = 1;
    }
    lines.push(`import type { I${kind} } from "${module}";`,
        `export const a${lines.length}: I${kind} = ${JSON.stringify(manifest)};`);
}
writeFileSync(out, lines.join("\n") + "\n");
if (lines.length === 0) {
    console.log(`${file}: no manifest`);
    bad = 1;
}
process.exitCode = bad;
