//Maya ASCII 2008 scene
createNode transform -n "quad";
createNode mesh -n "quadShape" -p "quad";
	setAttr -s 4 ".vt[0:3]" 0 0 0 1 0 0 1 1 0 0 1 0;
	setAttr -s 4 ".ed[0:3]" 0 1 0 1 2 0 2 3 0 3 0 0;
	setAttr -s 1 ".fc[0:0]" -type "polyFaces" f 4 0 1 2 3;
	addAttr -ln "objText" -sn "objText" -dt "string";
	setAttr ".objText" -type "string" "usemtl red\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
createNode transform -n "other";
createNode mesh -n "otherShape" -p "other";
	setAttr -s 3 ".vt[0:2]" 0 0 0 1 0 0 1 1 0;
	setAttr -s 3 ".ed[0:2]" 0 1 0 1 2 0 2 0 0;
	setAttr -s 1 ".fc[0:0]" -type "polyFaces" f 3 0 1 2;
	setAttr ".objText" -type "string" "usemtl red\nnot a mesh: f 1 2";
