-- The tables of the clinic's management program, as far as the station touches them. They belong to that program: in a
-- clinic they exist already, and this file is for a trial or a test only.

-- wj: patients, one row for each chart.
CREATE TABLE IF NOT EXISTS wj (
    wj_chart   VARCHAR(20) NOT NULL,
    wj_suname  VARCHAR(100),
    wj_jumin   VARCHAR(20),
    wj_tel     VARCHAR(50),
    wj_hptel   VARCHAR(50),
    wj_email   VARCHAR(100),
    wj_post    VARCHAR(10),
    wj_bunji   VARCHAR(200),
    wj_gongje  VARCHAR(10),
    wj_fymd    VARCHAR(8),
    wj_lymd    VARCHAR(8),
    wj_chamgo  TEXT,
    wj_kwamok  VARCHAR(10),
    wj_jinchal VARCHAR(10),
    wj_xray    VARCHAR(20),
    wj_ibdc    VARCHAR(10),
    wj_wedc    VARCHAR(10),
    wj_mansung VARCHAR(10),
    wj_etc1    VARCHAR(100),
    wj_etc2    VARCHAR(100),
    wj_etc3    VARCHAR(100),
    PRIMARY KEY (wj_chart)
) ENGINE = InnoDB DEFAULT CHARSET = utf8mb4 COLLATE = utf8mb4_bin;

-- bh: insurance of a chart, each row valid from its date.
CREATE TABLE IF NOT EXISTS bh (
    bh_chart      VARCHAR(20) NOT NULL,
    bh_chymd      VARCHAR(8)  NOT NULL,
    bh_yuhyung    VARCHAR(10) NOT NULL DEFAULT '',
    bh_saupkiho   VARCHAR(20),
    bh_kwange     VARCHAR(10),
    bh_piboname   VARCHAR(100),
    bh_pibojumin  VARCHAR(20),
    bh_jungno     VARCHAR(20),
    bh_jongbl     VARCHAR(10),
    bh_upchemyung VARCHAR(100),
    bh_sagoymd    VARCHAR(8),
    bh_sungkiho   VARCHAR(20),
    bh_okymd      VARCHAR(8),
    PRIMARY KEY (bh_chart, bh_chymd, bh_yuhyung)
) ENGINE = InnoDB DEFAULT CHARSET = utf8mb4 COLLATE = utf8mb4_bin;

-- jh: workplaces.
CREATE TABLE IF NOT EXISTS jh (
    jh_saupkiho  VARCHAR(20) NOT NULL,
    jh_saupmyung VARCHAR(100),
    jh_hal       VARCHAR(10),
    PRIMARY KEY (jh_saupkiho)
) ENGINE = InnoDB DEFAULT CHARSET = utf8mb4 COLLATE = utf8mb4_bin;

-- pt: postal codes.
CREATE TABLE IF NOT EXISTS pt (
    pt_post  VARCHAR(10) NOT NULL,
    pt_myung VARCHAR(200),
    PRIMARY KEY (pt_post)
) ENGINE = InnoDB DEFAULT CHARSET = utf8mb4 COLLATE = utf8mb4_bin;

-- doctor: doctors, one row for each period.
CREATE TABLE IF NOT EXISTS doctor (
    doctor_code    VARCHAR(10) NOT NULL,
    doctor_ymd     VARCHAR(8)  NOT NULL,
    doctor_jungji  VARCHAR(8)  NOT NULL DEFAULT '',
    doctor_myung   VARCHAR(100),
    doctor_name    VARCHAR(100),
    doctor_meonheo VARCHAR(20),
    doctor_saup    VARCHAR(10),
    doctor_kwamok  VARCHAR(10),
    PRIMARY KEY (doctor_code, doctor_ymd)
) ENGINE = InnoDB DEFAULT CHARSET = utf8mb4 COLLATE = utf8mb4_bin;

-- so: coded texts; kind 4 are the ready-made findings phrases.
CREATE TABLE IF NOT EXISTS so (
    so_code  VARCHAR(20) NOT NULL,
    so_gubun VARCHAR(1)  NOT NULL,
    so_myung TEXT,
    PRIMARY KEY (so_code, so_gubun)
) ENGINE = InnoDB DEFAULT CHARSET = utf8mb4 COLLATE = utf8mb4_bin;

-- yk: appointments; kind 6 are those that take the capture mark.
CREATE TABLE IF NOT EXISTS yk (
    yk_chart     VARCHAR(20) NOT NULL,
    yk_jinchal   VARCHAR(10) NOT NULL,
    yk_ykymd     VARCHAR(8)  NOT NULL,
    yk_sayugubun VARCHAR(1)  NOT NULL,
    yk_check     VARCHAR(1)  NOT NULL DEFAULT '',
    PRIMARY KEY (yk_chart, yk_ykymd, yk_jinchal, yk_sayugubun)
) ENGINE = InnoDB DEFAULT CHARSET = utf8mb4 COLLATE = utf8mb4_bin;
