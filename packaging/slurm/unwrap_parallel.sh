#!/bin/bash
#SBATCH --job-name=tessora --nodes=1 --exclusive --time=08:00:00
# unwrap_parallel.sh SHARDS MESHES RESULTS [options of tessora unwrap], on one machine with GNU parallel, with or
# without Slurm. Many short shards in one job are easier on a scheduler than an array. Run again, it does what is
# missing.
set -eu
shards=$1 meshes=$2 results=$3
shift 3
seq 0 $((shards - 1)) | parallel -q --joblog "$results.joblog" --line-buffer --tag \
    tessora unwrap "$meshes" --out_dir "$results" --skip_existing --jobs 1 --shard "{}/$shards" "$@"
