-- The tables of the clinic's management program, as far as the station touches them. They belong to that program: in a
-- clinic they exist already, and this file is for a trial or a test only.
-- RTRIM compares byte by byte, blanks at the end left out, as the server compares its texts.

-- wj: patients, one row for each chart.
CREATE TABLE IF NOT EXISTS wj (
    wj_chart TEXT COLLATE RTRIM NOT NULL,
    wj_suname TEXT COLLATE RTRIM,
    wj_jumin TEXT COLLATE RTRIM,
    wj_tel TEXT COLLATE RTRIM,
    wj_hptel TEXT COLLATE RTRIM,
    wj_email TEXT COLLATE RTRIM,
    wj_post TEXT COLLATE RTRIM,
    wj_bunji TEXT COLLATE RTRIM,
    wj_gongje TEXT COLLATE RTRIM,
    wj_fymd TEXT COLLATE RTRIM,
    wj_lymd TEXT COLLATE RTRIM,
    wj_chamgo TEXT,
    wj_kwamok TEXT COLLATE RTRIM,
    wj_jinchal TEXT COLLATE RTRIM,
    wj_xray TEXT COLLATE RTRIM,
    wj_ibdc TEXT COLLATE RTRIM,
    wj_wedc TEXT COLLATE RTRIM,
    wj_mansung TEXT COLLATE RTRIM,
    wj_etc1 TEXT COLLATE RTRIM,
    wj_etc2 TEXT COLLATE RTRIM,
    wj_etc3 TEXT COLLATE RTRIM,
    PRIMARY KEY (wj_chart)
);

-- bh: insurance of a chart, each row valid from its date.
CREATE TABLE IF NOT EXISTS bh (
    bh_chart TEXT COLLATE RTRIM NOT NULL,
    bh_chymd TEXT COLLATE RTRIM NOT NULL,
    bh_yuhyung TEXT COLLATE RTRIM NOT NULL DEFAULT '',
    bh_saupkiho TEXT COLLATE RTRIM,
    bh_kwange TEXT COLLATE RTRIM,
    bh_piboname TEXT COLLATE RTRIM,
    bh_pibojumin TEXT COLLATE RTRIM,
    bh_jungno TEXT COLLATE RTRIM,
    bh_jongbl TEXT COLLATE RTRIM,
    bh_upchemyung TEXT COLLATE RTRIM,
    bh_sagoymd TEXT COLLATE RTRIM,
    bh_sungkiho TEXT COLLATE RTRIM,
    bh_okymd TEXT COLLATE RTRIM,
    PRIMARY KEY (bh_chart, bh_chymd, bh_yuhyung)
) WITHOUT ROWID;

-- jh: workplaces.
CREATE TABLE IF NOT EXISTS jh (
    jh_saupkiho TEXT COLLATE RTRIM NOT NULL,
    jh_saupmyung TEXT COLLATE RTRIM,
    jh_hal TEXT COLLATE RTRIM,
    PRIMARY KEY (jh_saupkiho)
) WITHOUT ROWID;

-- pt: postal codes.
CREATE TABLE IF NOT EXISTS pt (
    pt_post TEXT COLLATE RTRIM NOT NULL,
    pt_myung TEXT COLLATE RTRIM,
    PRIMARY KEY (pt_post)
) WITHOUT ROWID;

-- doctor: doctors, one row for each period.
CREATE TABLE IF NOT EXISTS doctor (
    doctor_code TEXT COLLATE RTRIM NOT NULL,
    doctor_ymd TEXT COLLATE RTRIM NOT NULL,
    doctor_jungji TEXT COLLATE RTRIM NOT NULL DEFAULT '',
    doctor_myung TEXT COLLATE RTRIM,
    doctor_name TEXT COLLATE RTRIM,
    doctor_meonheo TEXT COLLATE RTRIM,
    doctor_saup TEXT COLLATE RTRIM,
    doctor_kwamok TEXT COLLATE RTRIM,
    PRIMARY KEY (doctor_code, doctor_ymd)
) WITHOUT ROWID;

-- so: coded texts; kind 4 are the ready-made findings phrases.
CREATE TABLE IF NOT EXISTS so (
    so_code TEXT COLLATE RTRIM NOT NULL,
    so_gubun TEXT COLLATE RTRIM NOT NULL,
    so_myung TEXT,
    PRIMARY KEY (so_code, so_gubun)
);

-- yk: appointments; kind 6 are those that take the capture mark.
CREATE TABLE IF NOT EXISTS yk (
    yk_chart TEXT COLLATE RTRIM NOT NULL,
    yk_jinchal TEXT COLLATE RTRIM NOT NULL,
    yk_ykymd TEXT COLLATE RTRIM NOT NULL,
    yk_sayugubun TEXT COLLATE RTRIM NOT NULL,
    yk_check TEXT COLLATE RTRIM NOT NULL DEFAULT '',
    PRIMARY KEY (yk_chart, yk_ykymd, yk_jinchal, yk_sayugubun)
) WITHOUT ROWID;
